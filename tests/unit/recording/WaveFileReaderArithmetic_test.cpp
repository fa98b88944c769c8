// Mid/side decoding, gains, ramps and the peak scan.
#include "recording/WaveFileReader.h"

#include "recording/SideLevelCoef.h"
#include "support/Bytes.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>

namespace deckmate {
namespace {

using namespace test;

using Samples = std::vector<float>;

constexpr float infinity = std::numeric_limits<float>::infinity();

// ---- Plain operations

TEST(Gain, ADivisorOfZeroLeavesTheSample) {
    EXPECT_EQ(WaveFileReader::COM_SetCvtdBSample(24, 0.3F, 0.0F), 0.3F);
    EXPECT_EQ(WaveFileReader::COM_SetCvtdBSample(24, 0.3F, -0.0F), 0.3F);
}

TEST(Gain, ASampleIsDivided) {
    EXPECT_EQ(WaveFileReader::COM_SetCvtdBSample(24, 0.5F, 0.25F), 2.0F);
}

TEST(Gain, ZeroDecibelsLeaveSamplesUnchanged) {
    Samples samples{0.1F, -0.2F, 0.3F, 1.5F};
    WaveFileReader::COM_AdjustdB(24, samples.data(), 4, 0.0, 0.0);
    EXPECT_EQ(samples, (Samples{0.1F, -0.2F, 0.3F, 1.5F}));
}

TEST(Gain, EachChannelHasItsOwnDecibels) {
    Samples samples{0.25F, 0.25F, -0.125F, -0.125F};
    WaveFileReader::COM_AdjustdB(24, samples.data(), 4, -6.0206, 0.0);
    EXPECT_NEAR(samples[0], 0.5, 1e-6);
    EXPECT_EQ(samples[1], 0.25F);
    EXPECT_NEAR(samples[2], -0.25, 1e-6);
    EXPECT_EQ(samples[3], -0.125F);
}

// 10^(20/20) is exact: a sample divided by 10, rounded once.
TEST(Gain, TwentyDecibelsDivideByTen) {
    Samples samples{0.7F, 0.3F};
    WaveFileReader::COM_AdjustdB(24, samples.data(), 2, 20.0, -20.0);
    EXPECT_EQ(samples, (Samples{0.7F / 10.0F, 0.3F / 0.1F}));
}

TEST(Gain, AnOddCountTakesInTheSampleBehindIt) {
    Samples samples{1.0F, 1.0F, 1.0F, 1.0F, 1.0F, 1.0F};
    WaveFileReader::COM_AdjustdB(24, samples.data(), 3, 20.0, 20.0);
    EXPECT_EQ(samples, (Samples{0.1F, 0.1F, 0.1F, 0.1F, 1.0F, 1.0F}));
}

TEST(Gain, DecibelsOfMinusInfinityCountAsNone) {
    Samples samples{0.5F, 0.25F};
    WaveFileReader::COM_AdjustdB(24, samples.data(), 2, -HUGE_VAL, -HUGE_VAL);
    EXPECT_EQ(samples, (Samples{0.5F, 0.25F}));
}

TEST(MidSide, UnityAngleGivesSumAndDifference) {
    Samples pair{0.5F, 0.25F};
    WaveFileReader::COM_SetCvtMSSample(24, pair.data(), 120);
    EXPECT_EQ(pair, (Samples{0.75F, 0.25F}));
}

TEST(MidSide, AngleZeroIsMono) {
    Samples pair{0.5F, 0.25F};
    WaveFileReader::COM_SetCvtMSSample(24, pair.data(), 0);
    EXPECT_EQ(pair, (Samples{0.5F, 0.5F}));
}

TEST(MidSide, TheSideIsScaledByTheTable) {
    Samples pair{0.5F, 0.25F};
    WaveFileReader::COM_SetCvtMSSample(24, pair.data(), 20);
    EXPECT_EQ(pair, (Samples{0.5F + 0.025F, 0.5F - 0.025F}));
}

TEST(MidSide, AnglesOutsideTheTableMeanItsEnds) {
    Samples low{0.5F, 0.25F};
    WaveFileReader::COM_SetCvtMSSample(24, low.data(), -1);
    EXPECT_EQ(low, (Samples{0.5F, 0.5F}));
    Samples high{0.0F, 1.0F};
    WaveFileReader::COM_SetCvtMSSample(24, high.data(), 1000);
    EXPECT_EQ(high, (Samples{1.99526227F, -1.99526227F}));
}

TEST(MidSide, DecodesEveryPairOfTheCount) {
    Samples samples{0.5F, 0.25F, 0.25F, 0.5F, 1.0F, 1.0F};
    WaveFileReader::COM_MSDecode(24, samples.data(), 4, 120);
    EXPECT_EQ(samples, (Samples{0.75F, 0.25F, 0.75F, -0.25F, 1.0F, 1.0F}));
}

TEST(MidSide, AnOddCountTakesInTheSampleBehindIt) {
    Samples samples{0.5F, 0.25F, 0.5F, 0.25F};
    WaveFileReader::COM_MSDecode(24, samples.data(), 3, 120);
    EXPECT_EQ(samples, (Samples{0.75F, 0.25F, 0.75F, 0.25F}));
}

TEST(MidSide, NothingClips) {
    Samples pair{1.0F, 1.0F};
    WaveFileReader::COM_SetCvtMSSample(24, pair.data(), 120);
    EXPECT_EQ(pair, (Samples{2.0F, 0.0F}));
}

TEST(MidSide, AnglesOfControlsAreCutTowardZero) {
    EXPECT_EQ(WaveFileReader::truncatedAngle(119.999), 119);
    EXPECT_EQ(WaveFileReader::truncatedAngle(120.0), 120);
    EXPECT_EQ(WaveFileReader::truncatedAngle(-0.9), 0);
    EXPECT_EQ(WaveFileReader::truncatedAngle(-1e300), 0);
    EXPECT_EQ(WaveFileReader::truncatedAngle(1e300), 150);
    EXPECT_EQ(WaveFileReader::truncatedAngle(std::nan("")), 0);
}

// ---- Ramps

/// The divisors that each frame of a buffer of `frames` saw: the left sample is 1, the right one
/// -1.
std::vector<double> divisors(std::size_t frames, const AdjustDBInfo& info) {
    Samples samples;
    for (std::size_t k = 0; k < frames; ++k) {
        samples.insert(samples.end(), {1.0F, -1.0F});
    }
    WaveFileReader::COM_AdjustdBForPlaying(24, samples.data(), frames, &info);
    std::vector<double> seen;
    for (std::size_t k = 0; k < frames; ++k) {
        EXPECT_EQ(samples[2 * k], -samples[2 * k + 1]) << k;
        seen.push_back(1.0 / static_cast<double>(samples[2 * k]));
    }
    return seen;
}

TEST(GainRamp, TakesTheWholeOfAShortBuffer) {
    const auto seen = divisors(480, {.curGain = 20, .prevGain = 0});
    for (std::size_t k = 0; k < 480; ++k) {
        EXPECT_NEAR(seen[k], 1.0 + 9.0 * static_cast<double>(k) / 480.0, 1e-5) << k;
    }
}

TEST(GainRamp, IsCompleteAfter960Frames) {
    const auto seen = divisors(4096, {.curGain = 20, .prevGain = 0});
    EXPECT_NEAR(seen[0], 1.0, 1e-6);
    EXPECT_NEAR(seen[480], 5.5, 1e-5);
    EXPECT_NEAR(seen[959], 1.0 + 9.0 * 959.0 / 960.0, 1e-5);
    for (std::size_t k = 960; k < 4096; ++k) {
        EXPECT_NEAR(seen[k], 10.0, 1e-5) << k;
    }
}

TEST(GainRamp, FallsInAStraightLineOfAmplitude) {
    const auto seen = divisors(960, {.curGain = -20, .prevGain = 0});
    EXPECT_NEAR(seen[480], 0.55, 1e-6);
}

TEST(GainRamp, IsFlatWithoutAChange) {
    for (const double divisor : divisors(1000, {.curGain = 20, .prevGain = 20})) {
        EXPECT_NEAR(divisor, 10.0, 1e-5);
    }
}

/// Each step of the rule written out in the precision it names.
TEST(GainRamp, EveryFrameIsExact) {
    const AdjustDBInfo info{.curGain = -7, .prevGain = 13};
    Samples samples(2 * 1100, 0.7F);
    WaveFileReader::COM_AdjustdBForPlaying(24, samples.data(), 1100, &info);
    const double start = std::pow(10.0, double{13.0F / 20.0F});
    const double end = std::pow(10.0, double{-7.0F / 20.0F});
    for (std::size_t k = 0; k < 1100; ++k) {
        const double divisor =
            k < 960 ? start + static_cast<double>(k) * (end - start) / 960.0 : end;
        const double exact = static_cast<double>(0.7F) / double{static_cast<float>(divisor)};
        ASSERT_EQ(samples[2 * k], static_cast<float>(exact)) << k;
        ASSERT_EQ(samples[2 * k + 1], static_cast<float>(exact)) << k;
    }
}

TEST(GainRamp, AnEmptyBufferIsLeftAlone) {
    const AdjustDBInfo info{.curGain = 3, .prevGain = 0};
    Samples samples{0.5F, 0.5F};
    WaveFileReader::COM_AdjustdBForPlaying(24, samples.data(), 0, &info);
    EXPECT_EQ(samples, (Samples{0.5F, 0.5F}));
}

/// The angle at which each frame was decoded, read back from a side signal of 1.
std::vector<int> angles(std::size_t frames, const AdjustAngleInfo& info) {
    Samples samples;
    for (std::size_t k = 0; k < frames; ++k) {
        samples.insert(samples.end(), {0.0F, 1.0F});
    }
    WaveFileReader::COM_MSDecodeForPlaying(24, samples.data(), frames, &info);
    std::vector<int> seen;
    for (std::size_t k = 0; k < frames; ++k) {
        const auto* entry = std::find(SideLevelCoef.begin(), SideLevelCoef.end(), samples[2 * k]);
        EXPECT_EQ(samples[2 * k + 1], -samples[2 * k]);
        seen.push_back(static_cast<int>(entry - SideLevelCoef.begin()));
    }
    return seen;
}

TEST(AngleRamp, MovesOneStepPerFrameFromTheFirstFrameOn) {
    EXPECT_EQ(angles(4, {.curAngle = 90, .prevAngle = 100}), (std::vector{99, 98, 97, 96}));
    EXPECT_EQ(angles(4, {.curAngle = 130, .prevAngle = 100}), (std::vector{101, 102, 103, 104}));
}

TEST(AngleRamp, NeverOvershoots) {
    EXPECT_EQ(angles(4, {.curAngle = 98, .prevAngle = 100}), (std::vector{99, 98, 98, 98}));
    EXPECT_EQ(angles(4, {.curAngle = 102, .prevAngle = 100}), (std::vector{101, 102, 102, 102}));
}

TEST(AngleRamp, StaysWithoutAChange) {
    EXPECT_EQ(angles(3, {.curAngle = 70, .prevAngle = 70}), (std::vector{70, 70, 70}));
}

TEST(AngleRamp, BeginsAnewFromTheOldTargetWhereABufferEndedEarly) {
    // Two frames reach 98; the caller then hands over the old target as the start.
    EXPECT_EQ(angles(2, {.curAngle = 0, .prevAngle = 100}), (std::vector{99, 98}));
    EXPECT_EQ(angles(2, {.curAngle = 0, .prevAngle = 0}), (std::vector{0, 0}));
}

TEST(Ramps, LeaveTheirRecordsAlone) {
    const AdjustDBInfo gain{.curGain = 3, .prevGain = -3};
    const AdjustAngleInfo angle{.curAngle = 10, .prevAngle = 20};
    Samples samples(200, 0.1F);
    WaveFileReader::COM_AdjustdBForPlaying(24, samples.data(), 100, &gain);
    WaveFileReader::COM_MSDecodeForPlaying(24, samples.data(), 100, &angle);
    EXPECT_EQ(gain.curGain, 3);
    EXPECT_EQ(gain.prevGain, -3);
    EXPECT_EQ(angle.curAngle, 10);
    EXPECT_EQ(angle.prevAngle, 20);
}

// ---- Peak scan

/// Ten frames a second, so that seconds are easily told from frames. The `data` chunk is longer
/// than its offset, so that the early end of the scan doesn't hide the frames asked for.
class PeakScan : public testing::Test {
protected:
    static constexpr std::uint32_t rate = 10;
    static constexpr std::uint32_t position = 12 + 24 + 8;

    std::shared_ptr<WaveFileReader> reader;

    void open(const Bytes& samples, Format format = {}) {
        format.rate = rate;
        reader = WaveFileReader::readFromData(
            riff(chunk("fmt ", formatBody(format)) + chunk("data", samples)));
        ASSERT_EQ(reader->header().dataChunkPosition, position);
    }

    std::pair<float, float> peaks(double from, double to, double gain = 0,
                                  double angle = 120) const {
        float left = -1.0F;
        float right = -1.0F;
        reader->getSampleLevelMeterFrom(from, to, &left, &right, gain, angle);
        return {left, right};
    }

    using Pair = std::pair<float, float>;

    /// Frame k holds k/2048 and -k/1024.
    static Bytes rising(int frames) {
        Bytes bytes;
        for (int k = 0; k < frames; ++k) {
            bytes = bytes + pcm24({k << 12, -k * (1 << 13)});
        }
        return bytes;
    }
};

TEST_F(PeakScan, FindsTheLargestMagnitudesOfTheStretch) {
    open(rising(100));
    EXPECT_EQ(peaks(1.0, 2.0), (Pair{19 / 2048.0F, 19 / 1024.0F}));
}

TEST_F(PeakScan, StartsAtTheFrameOfItsTime) {
    open(rising(100));
    EXPECT_EQ(peaks(1.0, 1.0), (Pair{0.0F, 0.0F}));
    EXPECT_EQ(reader->readDataIdx(), 10U * 6 + position);
}

TEST_F(PeakScan, RoundsItsStartUpToAWholeFrame) {
    open(rising(100));
    peaks(1.01, 1.01); // byte 60.6 is cut to 60, which is whole
    EXPECT_EQ(reader->readDataIdx(), 60U + position);
    peaks(1.02, 1.02); // byte 61 belongs to the frame that has begun
    EXPECT_EQ(reader->readDataIdx(), 66U + position);
}

TEST_F(PeakScan, NeverReachesTheLastBytesOfTheAudio) {
    open(rising(100));
    // It ends at file offset 600, where frame 92 begins and 2 of its bytes lie: 92 is the last
    // read.
    EXPECT_EQ(peaks(0.0, 100.0), (Pair{92 / 2048.0F, 92 / 1024.0F}));
    EXPECT_EQ(reader->readDataIdx(), position + 93U * 6);
}

TEST_F(PeakScan, BeyondTheDataThereIsNothing) {
    open(rising(100));
    EXPECT_EQ(peaks(100.0, 200.0), (Pair{0.0F, 0.0F}));
    EXPECT_EQ(peaks(9.9, 10.0), (Pair{0.0F, 0.0F}));
}

TEST_F(PeakScan, ImpossibleTimesFindNothing) {
    open(rising(100));
    const double notANumber = std::nan("");
    EXPECT_EQ(peaks(1e300, 1e300), (Pair{0.0F, 0.0F}));
    EXPECT_EQ(peaks(HUGE_VAL, HUGE_VAL), (Pair{0.0F, 0.0F}));
    EXPECT_EQ(peaks(notANumber, notANumber), (Pair{0.0F, 0.0F}));
    EXPECT_EQ(peaks(2.0, 1.0), (Pair{0.0F, 0.0F}));
    EXPECT_EQ(peaks(-5.0, -4.0), (Pair{0.0F, 0.0F}));
}

TEST_F(PeakScan, DecodesRawRecordingsAtTheCutAngle) {
    open(pcm24({0x400000, 0x200000}) + zeros(94));
    reader->setIsBoMSFormat(true);
    EXPECT_EQ(peaks(0.0, 0.1, 0, 120.9), (Pair{0.75F, 0.25F}));
    EXPECT_EQ(peaks(0.0, 0.1, 0, 0.9), (Pair{0.5F, 0.5F}));
}

TEST_F(PeakScan, LeavesPlainRecordingsUndecoded) {
    open(pcm24({0x400000, 0x200000}) + zeros(94));
    EXPECT_EQ(peaks(0.0, 0.1), (Pair{0.5F, 0.25F}));
}

TEST_F(PeakScan, DividesByItsGain) {
    open(pcm24({0x400000, -0x200000}) + zeros(94));
    EXPECT_EQ(peaks(0.0, 0.1, 20), (Pair{0.5F / 10.0F, 0.25F / 10.0F}));
    EXPECT_EQ(peaks(0.0, 0.1, -20), (Pair{0.5F / 0.1F, 0.25F / 0.1F}));
}

TEST_F(PeakScan, TheMissingSideOfMonoReadsAsTwo) {
    open(pcm24({0x400000}) + zeros(97), {.channels = 1});
    EXPECT_EQ(peaks(0.0, 0.1), (Pair{0.5F, 2.0F}));
}

TEST_F(PeakScan, LongStretchesAreScannedWhole) {
    open(rising(1000));
    EXPECT_EQ(peaks(0.0, 90.0), (Pair{899 / 2048.0F, 899 / 1024.0F}));
}

TEST_F(PeakScan, IgnoresNotANumberAndKeepsInfinity) {
    open(floats({std::nanf(""), -infinity, 0.25F, 0.5F}) + zeros(84), {.tag = 3, .bits = 32});
    EXPECT_EQ(peaks(0.0, 0.2), (Pair{0.25F, infinity}));
}

TEST_F(PeakScan, FramesOfNoBytesHaveNoPeaks) {
    open(zeros(100), {.channels = 0});
    EXPECT_EQ(peaks(0.0, 10.0), (Pair{0.0F, 0.0F}));
}

TEST_F(PeakScan, DataThatClaimsMoreThanTheFileHoldsEndsWithTheFile) {
    reader = WaveFileReader::readFromData(riff(chunk("fmt ", formatBody({.rate = rate})) +
                                               chunk("data", pcm24({1 << 20, 1 << 20}), 6000)));
    EXPECT_EQ(peaks(0.0, 50.0), (Pair{0.125F, 0.125F}));
}

} // namespace
} // namespace deckmate
