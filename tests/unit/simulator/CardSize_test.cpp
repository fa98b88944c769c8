#include "h8-simulator/CardSize.h"

#include <array>
#include <cmath>
#include <cstdio>
#include <gtest/gtest.h>
#include <optional>
#include <string>

namespace deckmate::tools {
namespace {

constexpr std::uint64_t mebi = std::uint64_t{1} << 20;
constexpr std::uint64_t gibi = std::uint64_t{1} << 30;

/// What the computer shows of ten digits, by its own rules in single precision.
std::string shownOf(const Digits& digits) {
    constexpr std::array<float, numberOfDigits> weights = {
        0x1p0F, 0x1p7F, 0x1p14F, 0x1p21F, 0x1p28F, 0x1p35F, 0x1p42F, 0x1p47F, 0x1p56F, 0x1p63F};
    float bytes = 0;
    for (std::size_t i = 0; i < numberOfDigits; ++i) {
        bytes += static_cast<float>(digits[i]) * weights[i];
    }
    const bool isSmall = bytes < 0x1p30F;
    const double value = static_cast<double>(bytes) * (isSmall ? 0x1p-20 : 0x1p-30);
    const char* unit = isSmall ? "MB" : "GB";
    std::array<char, 64> text = {};
    if (value < 10) {
        std::snprintf(text.data(), text.size(), "%.2f %s", value, unit);
    } else if (value < 100) {
        std::snprintf(text.data(), text.size(), "%.1f %s", value, unit);
    } else {
        std::snprintf(text.data(), text.size(), "%3d %s", static_cast<int>(value), unit);
    }
    return text.data();
}

TEST(CardSize, NothingIsTenZeros) {
    EXPECT_EQ(digitsOf(0), Digits{});
}

TEST(CardSize, LowestDigitComesFirst) {
    EXPECT_EQ(digitsOf(127), (Digits{0x7F}));
    EXPECT_EQ(digitsOf(128), (Digits{0x00, 0x01}));
    EXPECT_EQ(digitsOf(128 * 128 + 3), (Digits{0x03, 0x00, 0x01}));
}

TEST(CardSize, EightMebibytesAreFourInTheFourthDigit) {
    EXPECT_EQ(digitsOf(8 * mebi), (Digits{0, 0, 0, 4})); // 8 * 2^20 = 4 * 2^21
}

TEST(CardSize, GibibytesReachTheSixthDigit) {
    // 119 * 2^30 = 476 * 2^28, and 476 = 3 * 128 + 92
    EXPECT_EQ(digitsOf(119 * gibi), (Digits{0, 0, 0, 0, 92, 3}));
}

TEST(CardSize, LargestSizeLeavesTheIrregularDigitsAlone) {
    EXPECT_EQ(digitsOf(largestSize), (Digits{0x7F, 0x7F, 0x7F, 0x7F, 0x7F, 0x7F, 0x7F, 0, 0, 0}));
}

TEST(CardSize, DigitsAddUpToTheSize) {
    for (const std::uint64_t size :
         {std::uint64_t{1}, 999 * mebi + 7, 31'997'506'355UL, 2000 * gibi, largestSize}) {
        EXPECT_EQ(bytesOf(digitsOf(size)), size);
    }
}

TEST(CardSize, LastThreeDigitsHaveTheProtocolsWeights) {
    EXPECT_EQ(bytesOf(Digits{0, 0, 0, 0, 0, 0, 0, 1, 0, 0}), std::uint64_t{1} << 47);
    EXPECT_EQ(bytesOf(Digits{0, 0, 0, 0, 0, 0, 0, 0, 1, 0}), std::uint64_t{1} << 56);
    EXPECT_EQ(bytesOf(Digits{0, 0, 0, 0, 0, 0, 0, 0, 0, 3}), std::uint64_t{1} << 63);
}

TEST(CardSize, ComputerShowsTheSizeThatWasWritten) {
    for (const char* text :
         {"0.00 MB", "0.01 MB", "8.00 MB", "9.99 MB", "10.5 MB", "99.9 MB", "100 MB", "512 MB",
          "1023 MB", "1.00 GB", "7.50 GB", "29.8 GB", "59.5 GB", "119 GB", "2047 GB"}) {
        const std::optional<std::uint64_t> size = parseSize(text);
        ASSERT_TRUE(size) << text;
        EXPECT_EQ(shownOf(digitsOf(*size)), text);
    }
}

TEST(CardSize, UnitsAreBinaryAndInAnyCase) {
    EXPECT_EQ(parseSize("1000"), 1000U);
    EXPECT_EQ(parseSize("12 B"), 12U);
    EXPECT_EQ(parseSize("3k"), 3072U);
    EXPECT_EQ(parseSize("3Kb"), 3072U);
    EXPECT_EQ(parseSize("1.5m"), mebi + mebi / 2);
    EXPECT_EQ(parseSize("7.5 GB"), 15 * gibi / 2);
    EXPECT_EQ(parseSize("2T"), 2048 * gibi);
}

TEST(CardSize, FractionsOfAByteAreRounded) {
    EXPECT_EQ(parseSize("29.8GB"), 31'997'506'355U); // 31,997,506,355.2
    EXPECT_EQ(parseSize("0.6"), 1U);
}

TEST(CardSize, LargestSizeIsTheLastOneAccepted) {
    EXPECT_EQ(parseSize("562949953421311"), largestSize);
    EXPECT_EQ(parseSize("562949953421312"), std::nullopt);
    EXPECT_EQ(parseSize("512TB"), std::nullopt);
}

TEST(CardSize, RefusesWhatIsNoSize) {
    for (const char* text : {"", " ", "GB", "x", "-1", "-0.6", "nan", "inf", "1e300", "1e-400",
                             "1 XB", "1GBB", "1BB", "1  GB", "1 GB ", " 1", "1KM", "0x10", "+1"}) {
        EXPECT_EQ(parseSize(text), std::nullopt) << text;
    }
}

} // namespace
} // namespace deckmate::tools
