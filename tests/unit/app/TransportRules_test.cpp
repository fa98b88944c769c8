#include "app/TransportRules.h"

#include <gtest/gtest.h>
#include <limits>

namespace deckmate {
namespace {

TEST(TransportRules, WavesShowThirdsOfTheVolume) {
    EXPECT_EQ(speakerImage(0.01, false), "speaker_1");
    EXPECT_EQ(speakerImage(0.3333, false), "speaker_1");
    EXPECT_EQ(speakerImage(0.34, false), "speaker_2");
    EXPECT_EQ(speakerImage(0.5, false), "speaker_2");
    EXPECT_EQ(speakerImage(0.6666, false), "speaker_2");
    EXPECT_EQ(speakerImage(0.67, false), "speaker_3");
    EXPECT_EQ(speakerImage(1.0, false), "speaker_3");
}

TEST(TransportRules, TheThirdsAreThoseOfSinglePrecision) {
    EXPECT_EQ(speakerImage(1.0 / 3, false), "speaker_1");
    EXPECT_EQ(speakerImage(0.33333334F, false), "speaker_2");
    EXPECT_EQ(speakerImage(2.0 / 3, false), "speaker_2");
    EXPECT_EQ(speakerImage(0.6666667F, false), "speaker_3");
}

TEST(TransportRules, SilenceOfBothKindsIsMute) {
    EXPECT_EQ(speakerImage(0, false), "speaker_mute");
    EXPECT_EQ(speakerImage(0.8, true), "speaker_mute");
}

TEST(TransportRules, TheMeterCountsDecibelsFromMinus48) {
    EXPECT_EQ(meterLevel(1.0F), 48);
    EXPECT_EQ(meterLevel(0.5F), 42);        // -6.02 dB
    EXPECT_EQ(meterLevel(1.9952624F), 54);  // +6.00 dB
    EXPECT_EQ(meterLevel(0.003981072F), 0); // -48.00 dB
    EXPECT_EQ(meterLevel(0.0001F), -32);    // -80 dB
    EXPECT_EQ(meterLevel(0.9441F), 48);     // -0.4996 dB
    EXPECT_EQ(meterLevel(0.94F), 47);       // -0.54 dB
    EXPECT_EQ(meterLevel(0.003758F), -1);   // -48.5009 dB: away from zero
}

TEST(TransportRules, WhatHasNoDecibelsIsOffTheScale) {
    EXPECT_LT(meterLevel(0.0F), -1000);
    EXPECT_LT(meterLevel(std::numeric_limits<float>::quiet_NaN()), -1000);
    EXPECT_GT(meterLevel(std::numeric_limits<float>::infinity()), 1000);
}

TEST(TransportRules, LevelsOfThePlayerLoseTheirSign) {
    EXPECT_EQ(decibelsFromFullScale(1.0), 0);
    EXPECT_EQ(decibelsFromFullScale(0.5), 6);
    EXPECT_EQ(decibelsFromFullScale(-0.5), 6);
    EXPECT_EQ(decibelsFromFullScale(2.0), 6);
    EXPECT_EQ(decibelsFromFullScale(0.1), 20);
    EXPECT_GT(decibelsFromFullScale(0.0), 1000);
}

TEST(TransportRules, ThePositionIsAShareOfTheDuration) {
    EXPECT_EQ(positionOf(15, 60), 0.25F);
    EXPECT_EQ(positionOf(-1, 60), 0.0F);
    EXPECT_EQ(positionOf(61, 60), 1.0F);
}

TEST(TransportRules, WithoutADurationThereIsNoPosition) {
    EXPECT_EQ(positionOf(0, 0), std::nullopt);
    EXPECT_EQ(positionOf(1, std::numeric_limits<double>::quiet_NaN()), std::nullopt);
}

TEST(TransportRules, LabelsOfTheGainScaleAreGains) {
    EXPECT_EQ(gainOfTick("+36"), 36);
    EXPECT_EQ(gainOfTick("+24"), 24);
    EXPECT_EQ(gainOfTick("+12"), 12);
    EXPECT_EQ(gainOfTick("0"), 0);
    EXPECT_EQ(gainOfTick("-12"), -12);
    EXPECT_EQ(gainOfTick("-24"), -24);
    EXPECT_EQ(gainOfTick("-36"), -36);
    EXPECT_EQ(gainOfTick("12"), std::nullopt);
    EXPECT_EQ(gainOfTick(""), std::nullopt);
}

TEST(TransportRules, AnglesAreCutTowardZero) {
    EXPECT_EQ(wholeAngle(44.9), 44);
    EXPECT_EQ(wholeAngle(-44.9), -44);
    EXPECT_EQ(wholeAngle(150), 150);
}

} // namespace
} // namespace deckmate
