#include "recording/SideLevelCoef.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>

namespace deckmate {
namespace {

/// 10^(d/20) in extended precision, by another road than a power: through the natural exponential.
float computed(int index) {
    const long double dB = index <= 15
                               ? -48.0L + static_cast<long double>(index - 1) * 27.0L / 14.0L
                               : static_cast<long double>(index - 120) / 5.0L;
    const long double ln10 = 2.302585092994045684017991454684364208L;
    return static_cast<float>(std::exp(dB / 20.0L * ln10));
}

TEST(SideLevelCoef, TellingRowsHoldToTheLastPrintedDigit) {
    const auto row = [](int index) { return static_cast<double>(SideLevelCoef.at(index)); };
    EXPECT_EQ(row(0), 0.0);
    EXPECT_NEAR(row(1), 0.0039810720, 0.5e-10);
    EXPECT_NEAR(row(2), 0.0049708262, 0.5e-10);
    EXPECT_NEAR(row(14), 0.0713791624, 0.5e-10);
    EXPECT_NEAR(row(15), 0.0891250968, 0.5e-10);
    EXPECT_EQ(SideLevelCoef[20], 0.1F);
    EXPECT_NEAR(row(70), 0.3162277639, 0.5e-10);
    EXPECT_EQ(row(120), 1.0);
    EXPECT_NEAR(row(150), 1.9952622652, 0.5e-10);
}

TEST(SideLevelCoef, FollowsTheDecibelRuleEverywhereButAtOne) {
    for (int index = 2; index <= maxAngle; ++index) {
        EXPECT_EQ(SideLevelCoef.at(index), computed(index)) << index;
    }
}

TEST(SideLevelCoef, EntryOneLiesOneFloatAboveTheRule) {
    EXPECT_EQ(SideLevelCoef[1], 0.0039810720F);
    EXPECT_EQ(SideLevelCoef[1], std::nextafter(computed(1), 1.0F));
}

TEST(SideLevelCoef, RisesAllTheWay) {
    for (std::size_t index = 1; index < SideLevelCoef.size(); ++index) {
        EXPECT_GT(SideLevelCoef.at(index), SideLevelCoef.at(index - 1)) << index;
    }
}

TEST(SideLevelCoef, AnglesOutsideTheTableMeanItsEnds) {
    EXPECT_EQ(sideLevel(-1), 0.0F);
    EXPECT_EQ(sideLevel(std::numeric_limits<std::int64_t>::min()), 0.0F);
    EXPECT_EQ(sideLevel(151), SideLevelCoef[150]);
    EXPECT_EQ(sideLevel(std::numeric_limits<std::int64_t>::max()), SideLevelCoef[150]);
}

} // namespace
} // namespace deckmate
