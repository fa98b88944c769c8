// Every implementation of the inner loops gives the bits worked out here by other means.
#include "recording/SampleKernels.h"

#include "support/GuardedMemory.h"

#include <bit>
#include <cmath>
#include <cstdlib>
#include <gtest/gtest.h>
#include <limits>
#include <random>
#include <vector>

namespace deckmate {
namespace {

using test::GuardedMemory;

constexpr float nan = std::numeric_limits<float>::quiet_NaN();
constexpr float infinity = std::numeric_limits<float>::infinity();

std::vector<const SampleKernels*> wideImplementations() {
    const SampleKernels* wide = SampleKernels::avx2();
    return wide != nullptr ? std::vector{wide} : std::vector<const SampleKernels*>();
}

std::vector<const SampleKernels*> implementations() {
    std::vector<const SampleKernels*> all = wideImplementations();
    all.push_back(&SampleKernels::portable());
    return all;
}

class SampleKernelsTest : public testing::TestWithParam<const SampleKernels*> {
protected:
    const SampleKernels& kernels() const { return *GetParam(); }

    std::vector<std::int32_t> packed(const std::vector<float>& samples) const {
        std::vector<std::uint8_t> bytes(3 * samples.size());
        kernels().packPcm24(samples.data(), bytes.data(), samples.size());
        std::vector<std::int32_t> values;
        for (std::size_t i = 0; i < bytes.size(); i += 3) {
            values.push_back(bytes[i] | bytes[i + 1] << 8 | bytes[i + 2] << 16);
        }
        return values;
    }
};

INSTANTIATE_TEST_SUITE_P(All, SampleKernelsTest, testing::ValuesIn(implementations()),
                         [](const auto& test) { return test.param->name; });

/// x * 8388607 cut toward zero, as low 24 bits, in integers: x is a 24-bit number times a power.
std::int32_t cutProduct(float x) {
    if (x >= 1.0F) {
        return 0x7FFFFF;
    }
    if (!(x > -1.0F)) {
        return 0x800000;
    }
    const std::uint32_t bits = std::bit_cast<std::uint32_t>(x);
    const std::uint32_t exponent = bits >> 23 & 0xFF;
    const std::uint64_t fraction = bits & 0x7FFFFF;
    const std::uint64_t significand = exponent == 0 ? fraction : fraction | 0x800000;
    const std::uint32_t shift = 150 - (exponent == 0 ? 1 : exponent);
    const std::uint64_t product = significand * 8388607U;
    const auto magnitude = static_cast<std::int32_t>(shift < 64 ? product >> shift : 0);
    return (bits >> 31 != 0 ? -magnitude : magnitude) & 0xFFFFFF;
}

TEST_P(SampleKernelsTest, UnpacksEvery24BitValueExactly) {
    constexpr std::int32_t values = 1 << 24;
    std::vector<std::uint8_t> bytes;
    bytes.reserve(3 * values);
    for (std::int32_t value = 0; value < values; ++value) {
        bytes.insert(bytes.end(),
                     {static_cast<std::uint8_t>(value), static_cast<std::uint8_t>(value >> 8),
                      static_cast<std::uint8_t>(value >> 16)});
    }
    std::vector<float> samples(values);
    kernels().unpackPcm24(bytes.data(), samples.data(), samples.size());
    for (std::int32_t value = 0; value < values; ++value) {
        const std::int32_t isSigned = value < values / 2 ? value : value - values;
        ASSERT_EQ(std::ldexp(samples.at(value), 23), isSigned);
    }
}

TEST_P(SampleKernelsTest, UnpacksWithinItsBuffersAtEveryLength) {
    for (std::size_t count = 0; count <= 40; ++count) {
        const GuardedMemory source(3 * count);
        const GuardedMemory target(4 * count);
        for (std::size_t i = 0; i < 3 * count; ++i) {
            source.bytes()[i] = i % 3 == 2 ? 0x40 : 0;
        }
        kernels().unpackPcm24(source.bytes(), target.floats(), count);
        for (std::size_t i = 0; i < count; ++i) {
            ASSERT_EQ(target.floats()[i], 0.5F) << i << " of " << count;
        }
    }
}

TEST_P(SampleKernelsTest, Packs24BitTellingValues) {
    const std::vector<float> samples{0.5F,      -0.5F,     1.0F,   -1.0F,     1.5F,  -1.5F,
                                     infinity,  -infinity, nan,    0.0F,      -0.0F, 0x1p-23F,
                                     -0x1p-23F, 0x1p-149F, -0.25F, 0x1.8p-23F};
    const std::vector<std::int32_t> expected{0x3FFFFF, 0xC00001, 0x7FFFFF, 0x800000,
                                             0x7FFFFF, 0x800000, 0x7FFFFF, 0x800000,
                                             0x800000, 0,        0,        0, // 1 - 2^-23 is cut
                                             0,        0,        0xE00001, 1};
    EXPECT_EQ(packed(samples), expected);
}

TEST_P(SampleKernelsTest, PacksTheNeighboursOfEveryStepExactly) {
    for (std::int32_t step = 0; step <= 8388608; step += 7) {
        const auto at = static_cast<float>(step / 8388607.0);
        const std::vector<float> samples{at,
                                         std::nextafter(at, 0.0F),
                                         std::nextafter(at, 2.0F),
                                         -at,
                                         std::nextafter(-at, 0.0F),
                                         std::nextafter(-at, -2.0F),
                                         at,
                                         -at,
                                         at,
                                         -at}; // ten, so that eight go through the wide path
        const std::vector<std::int32_t> values = packed(samples);
        for (std::size_t i = 0; i < samples.size(); ++i) {
            ASSERT_EQ(values[i], cutProduct(samples[i])) << samples[i];
        }
    }
}

TEST_P(SampleKernelsTest, PacksFloatsOfAllKindsExactly) {
    std::vector<float> samples;
    for (std::uint64_t bits = 0; bits <= 0xFFFFFFFF; bits += 4093) {
        samples.push_back(std::bit_cast<float>(static_cast<std::uint32_t>(bits)));
    }
    const std::vector<std::int32_t> values = packed(samples);
    for (std::size_t i = 0; i < samples.size(); ++i) {
        ASSERT_EQ(values[i], cutProduct(samples[i])) << samples[i];
    }
}

TEST_P(SampleKernelsTest, PacksWithinItsBuffersAtEveryLength) {
    for (std::size_t count = 0; count <= 40; ++count) {
        const GuardedMemory source(4 * count);
        const GuardedMemory target(3 * count);
        std::fill_n(source.floats(), count, -0.5F);
        kernels().packPcm24(source.floats(), target.bytes(), count);
        for (std::size_t i = 0; i < 3 * count; ++i) {
            ASSERT_EQ(target.bytes()[i], i % 3 == 0 ? 0x01 : i % 3 == 1 ? 0x00 : 0xC0);
        }
    }
}

// 0.1 has no exact float: a fused multiply-add would give other bits than two rounded operations.
TEST_P(SampleKernelsTest, RoundsTheSideProductBeforeTheSum) {
    std::mt19937 random(1);
    std::uniform_real_distribution<float> level(-1.0F, 1.0F);
    std::vector<float> pairs(2 * 1001);
    std::generate(pairs.begin(), pairs.end(), [&] { return level(random); });
    std::vector<float> expected;
    for (std::size_t i = 0; i < pairs.size(); i += 2) {
        // Products and sums of two floats, rounded once, through double.
        const double mid = static_cast<double>(pairs[i]);
        const double product = static_cast<double>(pairs[i + 1]) * static_cast<double>(0.1F);
        const double side = static_cast<double>(static_cast<float>(product));
        expected.push_back(static_cast<float>(mid + side));
        expected.push_back(static_cast<float>(mid - side));
    }
    kernels().decodeMidSide(pairs.data(), pairs.size() / 2, 0.1F);
    EXPECT_EQ(pairs, expected);
}

TEST_P(SampleKernelsTest, DecodesWithinItsBufferAtEveryLength) {
    for (const auto flush : {GuardedMemory::Flush::atEnd, GuardedMemory::Flush::atStart}) {
        for (std::size_t frames = 0; frames <= 20; ++frames) {
            const GuardedMemory memory(8 * frames, flush);
            for (std::size_t i = 0; i < 2 * frames; ++i) {
                memory.floats()[i] = i % 2 == 0 ? 0.5F : 0.25F;
            }
            kernels().decodeMidSide(memory.floats(), frames, 1.0F);
            for (std::size_t i = 0; i < 2 * frames; ++i) {
                ASSERT_EQ(memory.floats()[i], i % 2 == 0 ? 0.75F : 0.25F);
            }
        }
    }
}

TEST_P(SampleKernelsTest, DividesEachChannelByItsOwnDivisor) {
    for (std::size_t frames = 0; frames <= 20; ++frames) {
        const GuardedMemory memory(8 * frames);
        std::fill_n(memory.floats(), 2 * frames, 0.75F);
        kernels().divide(memory.floats(), frames, 0.5F, 3.0F);
        for (std::size_t i = 0; i < 2 * frames; ++i) {
            ASSERT_EQ(memory.floats()[i], i % 2 == 0 ? 1.5F : 0.25F);
        }
    }
}

TEST_P(SampleKernelsTest, DividesRoundedOnce) {
    std::mt19937 random(2);
    std::vector<float> pairs(2 * 997);
    std::generate(pairs.begin(), pairs.end(), [&] {
        return std::ldexp(static_cast<float>(random() >> 8), static_cast<int>(random() % 40) - 60);
    });
    std::vector<float> expected;
    for (const float sample : pairs) {
        expected.push_back(
            static_cast<float>(static_cast<double>(sample) / static_cast<double>(0.7F)));
    }
    kernels().divide(pairs.data(), pairs.size() / 2, 0.7F, 0.7F);
    EXPECT_EQ(pairs, expected);
}

TEST_P(SampleKernelsTest, PeaksAreMagnitudesPerChannel) {
    for (std::size_t frames = 1; frames <= 20; ++frames) {
        const GuardedMemory memory(8 * frames);
        std::fill_n(memory.floats(), 2 * frames, 0.125F);
        memory.floats()[2 * (frames / 2)] = -0.75F;
        memory.floats()[2 * (frames - 1) + 1] = -0.5F;
        float left = 0.0F;
        float right = 0.0F;
        kernels().raisePeaks(memory.floats(), frames, &left, &right);
        ASSERT_EQ(left, 0.75F);
        ASSERT_EQ(right, 0.5F);
    }
}

TEST_P(SampleKernelsTest, PeaksOnlyRise) {
    const std::vector<float> pairs(32, 0.25F);
    float left = 0.5F;
    float right = 0.125F;
    kernels().raisePeaks(pairs.data(), pairs.size() / 2, &left, &right);
    EXPECT_EQ(left, 0.5F);
    EXPECT_EQ(right, 0.25F);
}

TEST_P(SampleKernelsTest, PeaksIgnoreNotANumberAndKeepInfinity) {
    for (std::size_t place = 0; place < 20; ++place) {
        std::vector<float> pairs(40, 0.25F);
        pairs[2 * place] = nan;
        pairs[2 * place + 1] = -infinity;
        float left = 0.0F;
        float right = 0.0F;
        kernels().raisePeaks(pairs.data(), 20, &left, &right);
        ASSERT_EQ(left, 0.25F);
        ASSERT_EQ(right, infinity);
    }
}

// A comparison with NaN must not throw away what was found before it in the same place of a vector.
TEST_P(SampleKernelsTest, NotANumberLeavesTheFoundPeak) {
    for (std::size_t place = 0; place < 20; ++place) {
        std::vector<float> pairs(120, 0.125F);
        pairs[2 * place] = 0.75F;
        pairs[2 * (place + 20)] = nan;
        float left = 0.0F;
        float right = 0.0F;
        kernels().raisePeaks(pairs.data(), 60, &left, &right);
        ASSERT_EQ(left, 0.75F) << place;
    }
}

/// The implementations that are held against the plain one.
class WideKernelsTest : public SampleKernelsTest {};
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(WideKernelsTest);

INSTANTIATE_TEST_SUITE_P(All, WideKernelsTest, testing::ValuesIn(wideImplementations()),
                         [](const auto& test) { return test.param->name; });

/// Random bits as floats: denormals, infinities and NaN among them. Where both samples of a pair
/// are NaN the payload of their sum is the processor's choice, so a pair has one at the most.
std::vector<float> randomBits(std::size_t count) {
    std::mt19937 random(3);
    std::vector<float> values(count);
    std::generate(values.begin(), values.end(),
                  [&] { return std::bit_cast<float>(static_cast<std::uint32_t>(random())); });
    for (std::size_t i = 0; i < count; i += 2) {
        if (std::isnan(values[i])) {
            values[i + 1] = 0.5F;
        }
    }
    return values;
}

std::vector<std::uint32_t> bitsOf(const std::vector<float>& values) {
    std::vector<std::uint32_t> bits;
    for (const float value : values) {
        bits.push_back(std::bit_cast<std::uint32_t>(value));
    }
    return bits;
}

TEST_P(WideKernelsTest, DecodesAnyBitsLikeThePlainOne) {
    std::vector<float> values = randomBits(2 * 100003);
    std::vector<float> plain = values;
    kernels().decodeMidSide(values.data(), values.size() / 2, 1.9952623F);
    SampleKernels::portable().decodeMidSide(plain.data(), plain.size() / 2, 1.9952623F);
    EXPECT_EQ(bitsOf(values), bitsOf(plain));
}

TEST_P(WideKernelsTest, DividesAnyBitsLikeThePlainOne) {
    std::vector<float> values = randomBits(2 * 100003);
    std::vector<float> plain = values;
    kernels().divide(values.data(), values.size() / 2, 0.7F, 63.1F);
    SampleKernels::portable().divide(plain.data(), plain.size() / 2, 0.7F, 63.1F);
    EXPECT_EQ(bitsOf(values), bitsOf(plain));
}

TEST(SampleKernels, TheFastestOneIsActive) {
    EXPECT_EQ(&SampleKernels::active(), implementations().front());
}

// The choice is made once in a process, so this takes a new one.
TEST(SampleKernelsDeathTest, ThePlainOneCanBeForced) {
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    EXPECT_EXIT(
        {
            setenv("H8_KERNELS", "portable", 1);
            std::_Exit(&SampleKernels::active() == &SampleKernels::portable() ? 7 : 8);
        },
        testing::ExitedWithCode(7), "");
}

} // namespace
} // namespace deckmate
