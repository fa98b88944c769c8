#include "playback/WavePlayer.h"

#include "support/Bytes.h"
#include "support/LogLines.h"
#include "support/ManualRunLoop.h"
#include "support/ManualSound.h"

#include <cmath>
#include <cstring>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>
#include <vector>

namespace deckmate {
namespace {

using namespace test;

class WavePlayerSamplesTest : public testing::Test {
protected:
    LogLines log;
    ManualRunLoop loop;
    ManualSound sound;
    WavePlayer player{"missing.wav"};
    Bytes bytes;
    AudioQueueBuffer buffer;

    WavePlayerSamplesTest() = default;
    ~WavePlayerSamplesTest() override {
        player.cleanUp();
        loop.runPending();
    }
    WavePlayerSamplesTest(const WavePlayerSamplesTest&) = delete;
    WavePlayerSamplesTest& operator=(const WavePlayerSamplesTest&) = delete;
    WavePlayerSamplesTest(WavePlayerSamplesTest&&) = delete;
    WavePlayerSamplesTest& operator=(WavePlayerSamplesTest&&) = delete;

    void fill(Bytes samples, std::uint32_t frames) {
        bytes = std::move(samples);
        buffer.bytes = bytes.data();
        buffer.capacity = buffer.byteSize = static_cast<std::uint32_t>(bytes.size());
        buffer.packetDescriptionCount = frames;
    }

    static StreamDescription format(std::uint32_t bits, bool isFloat = false,
                                    std::uint32_t channels = 2) {
        StreamDescription description;
        description.bitsPerChannel = bits;
        description.channelsPerFrame = channels;
        description.formatFlags = isFloat ? StreamDescription::floatFlag : 0;
        return description;
    }

    void readAs(bool isRaw) {
        const auto reader = WaveFileReader::readFromData(recording(pcm24({0, 0})));
        reader->setIsBoMSFormat(isRaw);
        player.setReader(reader);
    }

    /// A pair of floats as 24-bit bytes.
    Bytes written(float left, float right) {
        fill(zeros(6), 1);
        WavePlayer::prepareFloatBuffer(buffer);
        float* floats = WavePlayer::S_24_BIT_SAMPLE_IN_FLOAT().bytes();
        floats[0] = left;
        floats[1] = right;
        WavePlayer::convertFloat2Byte24Bit(buffer);
        return bytes;
    }
};

TEST_F(WavePlayerSamplesTest, TwentyFourBitsBecomeFloatsAndBack) {
    readAs(false);
    fill(pcm24({0x7FFFFF, -0x800000, 1, -1}), 2);
    WavePlayer::prepareFloatBuffer(buffer);
    player.convertByte24bit2Float(buffer);
    const float* floats = WavePlayer::S_24_BIT_SAMPLE_IN_FLOAT().bytes();
    EXPECT_EQ(floats[0], 0.99999988F);
    EXPECT_EQ(floats[1], -1.0F);
    EXPECT_EQ(floats[2], 1.0F / 8388608.0F);
    EXPECT_EQ(floats[3], -1.0F / 8388608.0F);
    WavePlayer::convertFloat2Byte24Bit(buffer);
    EXPECT_EQ(bytes, pcm24({0x7FFFFF, -0x800000, 1, -1}));
}

TEST_F(WavePlayerSamplesTest, OnlyTheLeftIsClipped) {
    EXPECT_EQ(written(1.5F, 1.5F), (Bytes{0xFF, 0xFF, 0x7F, 0x00, 0x00, 0xC0}));
    EXPECT_EQ(written(-1.5F, -1.5F), (Bytes{0x00, 0x00, 0x80, 0x00, 0x00, 0x40}));
}

TEST_F(WavePlayerSamplesTest, ExactlyFullScaleWrapsOnBothSides) {
    EXPECT_EQ(written(1.0F, 1.0F), (Bytes{0x00, 0x00, 0x80, 0x00, 0x00, 0x80}));
    EXPECT_EQ(written(-1.0F, -1.0F), (Bytes{0x00, 0x00, 0x80, 0x00, 0x00, 0x80}));
}

TEST_F(WavePlayerSamplesTest, CutsTowardZero) {
    EXPECT_EQ(written(0x1.8p-22F, -0x1.8p-22F), pcm24({3, -3}));
    EXPECT_EQ(written(0x1.8p-23F, -0x1.8p-23F), pcm24({1, -1}));
}

TEST_F(WavePlayerSamplesTest, WhatIsNoSampleIsWrittenSomehow) {
    const float infinity = std::numeric_limits<float>::infinity();
    EXPECT_EQ(written(infinity, infinity), (Bytes{0xFF, 0xFF, 0x7F, 0, 0, 0}));
    EXPECT_EQ(written(std::nanf(""), std::nanf("")), zeros(6));
    EXPECT_EQ(written(-1e38F, 1e38F), (Bytes{0, 0, 0x80, 0, 0, 0}));
}

TEST_F(WavePlayerSamplesTest, TheFloatBufferOnlyGrowsAndClearsItsFirstQuarter) {
    fill(zeros(60), 10);
    WavePlayer::prepareFloatBuffer(buffer);
    WavArrayFloat32& floats = WavePlayer::S_24_BIT_SAMPLE_IN_FLOAT();
    const std::uint64_t length = floats.length();
    ASSERT_GE(length, 20U);
    std::fill_n(floats.bytes(), length, 1.0F);
    buffer.packetDescriptionCount = 1;
    WavePlayer::prepareFloatBuffer(buffer);
    EXPECT_EQ(floats.length(), length);
    EXPECT_EQ(floats.bytes()[0], 0.0F);
    EXPECT_EQ(floats.bytes()[length - 1], 1.0F);
}

TEST_F(WavePlayerSamplesTest, WithoutAReaderEverySampleIsTheFirst) {
    fill(pcm24({7, 8, 9, 10}), 2);
    WavePlayer::prepareFloatBuffer(buffer);
    player.convertByte24bit2Float(buffer);
    const float* floats = WavePlayer::S_24_BIT_SAMPLE_IN_FLOAT().bytes();
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(floats[i], 7.0F / 8388608.0F);
    }
}

TEST_F(WavePlayerSamplesTest, NothingBeyondTheBufferIsRead) {
    player.setReader(WaveFileReader::readFromData(recording({}, {.bits = 65535})));
    fill(pcm24({1, 2, 3, 4}), 1000);
    player.processSampleBuffer(buffer, format(24), 0);
    EXPECT_EQ(bytes.size(), 12U);
}

TEST_F(WavePlayerSamplesTest, RawRecordingsAreDecodedWithARamp) {
    readAs(true);
    player.setAngle(2);
    fill(floats({0.5F, 0.25F, 0.5F, 0.25F, 0.5F, 0.25F}), 3);
    player.processSampleBuffer(buffer, format(32, true), 0);
    // The first frame is one step on, the second two, and there it stays.
    const float one = 0.25F * 0.0039810720F;
    const float two = 0.25F * 0.0049708262F;
    EXPECT_EQ(bytes,
              floats({0.5F + one, 0.5F - one, 0.5F + two, 0.5F - two, 0.5F + two, 0.5F - two}));
}

TEST_F(WavePlayerSamplesTest, PlainRecordingsAreNotDecoded) {
    readAs(false);
    player.setAngle(150);
    fill(floats({0.5F, 0.25F}), 1);
    player.processSampleBuffer(buffer, format(32, true), 0);
    EXPECT_EQ(bytes, floats({0.5F, 0.25F}));
}

TEST_F(WavePlayerSamplesTest, APositiveGainIsLouderFromTheNextBufferOn) {
    readAs(false);
    player.setGain(20);
    fill(floats({0.05F, 0.05F, 0.05F, 0.05F}), 2);
    player.processSampleBuffer(buffer, format(32, true), 0); // moves there
    fill(floats({0.05F, -0.05F}), 1);
    player.processSampleBuffer(buffer, format(32, true), 0); // is there
    EXPECT_EQ(bytes, floats({0.05F / 0.1F, -0.05F / 0.1F}));
}

TEST_F(WavePlayerSamplesTest, OtherFormatsAreLeftAlone) {
    readAs(true);
    player.setGain(-20);
    const Bytes samples = {1, 2, 3, 4, 5, 6, 7, 8};
    for (const StreamDescription& other : {format(16), format(32), format(8), format(64, true),
                                           format(24, false, 1), format(32, true, 1)}) {
        fill(samples, 1);
        player.processSampleBuffer(buffer, other, 0);
        EXPECT_EQ(bytes, samples);
    }
}

} // namespace
} // namespace deckmate
