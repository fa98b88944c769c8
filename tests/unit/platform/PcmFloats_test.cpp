#include "platform/PcmFloats.h"

#include "support/Bytes.h"

#include <cstring>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <vector>

namespace deckmate {
namespace {

using namespace test;
using testing::ElementsAre;

StreamDescription format(std::uint32_t bits, bool isFloat = false) {
    StreamDescription description;
    description.channelsPerFrame = 1;
    description.bitsPerChannel = bits;
    description.bytesPerFrame = bits / 8;
    description.formatFlags = isFloat ? StreamDescription::floatFlag : 0;
    return description;
}

std::vector<float> converted(const StreamDescription& description, const Bytes& bytes) {
    std::vector<float> values(bytes.size() / description.bytesPerFrame);
    toFloats(description, bytes.data(), values.size(), values.data());
    return values;
}

TEST(PcmFloats, SixteenBitsAreExact) {
    EXPECT_THAT(converted(format(16), le16(0x8000) + le16(0x7FFF) + le16(1)),
                ElementsAre(-1.0F, 32767.0F / 32768.0F, 1.0F / 32768.0F));
}

TEST(PcmFloats, TwentyFourBitsAreExact) {
    EXPECT_THAT(converted(format(24), pcm24({-8388608, 8388607, 1, -1})),
                ElementsAre(-1.0F, 8388607.0F / 8388608.0F, 1.0F / 8388608.0F, -1.0F / 8388608.0F));
}

TEST(PcmFloats, EightBitsAreUnsigned) {
    EXPECT_THAT(converted(format(8), {0, 128, 255}), ElementsAre(-1.0F, 0.0F, 127.0F / 128.0F));
}

TEST(PcmFloats, ThirtyTwoBitsAreTheNearestFloats) {
    EXPECT_THAT(converted(format(32), le32(0x80000000) + le32(0x7FFFFFFF)),
                ElementsAre(-1.0F, 1.0F));
}

TEST(PcmFloats, FloatsAreLeftAlone) {
    EXPECT_THAT(converted(format(32, true), f32(1.5F) + f32(-0.1F)), ElementsAre(1.5F, -0.1F));
}

TEST(PcmFloats, DoublesAreTheNearestFloats) {
    EXPECT_THAT(converted(format(64, true), le64(0x3FF8000000000000)), ElementsAre(1.5F));
}

TEST(PcmFloats, FewerBitsAreTheUpperOnes) {
    StreamDescription twenty = format(24);
    twenty.bitsPerChannel = 20;
    ASSERT_TRUE(canBecomeFloats(twenty));
    EXPECT_THAT(converted(twenty, le24(0x400000) + le24(-0x800000)), ElementsAre(0.5F, -1.0F));
}

TEST(PcmFloats, OtherFormatsAreRefused) {
    EXPECT_FALSE(canBecomeFloats(format(0)));
    EXPECT_FALSE(canBecomeFloats(format(20)));
    EXPECT_FALSE(canBecomeFloats(format(16, true)));
    StreamDescription padded = format(24);
    padded.bytesPerFrame = 4;
    EXPECT_FALSE(canBecomeFloats(padded));
    EXPECT_TRUE(canBecomeFloats(format(24)));
}

} // namespace
} // namespace deckmate
