#include "controls/LevelGeometry.h"

#include <cstdint>
#include <gtest/gtest.h>

namespace deckmate::test {

namespace {

LevelZones measuredAt(double height) {
    LevelZones zones;
    zones.measureOnce(height);
    return zones;
}

TEST(LevelGeometry, LevelsOfAMeterSeventyHigh) {
    const LevelZones zones = measuredAt(70);
    struct Row {
        std::int64_t level;
        double height;
    };
    const Row rows[] = {{0, 0}, {12, 10}, {23, 20.0 * 23 / 24}, {24, 20}, {39, 45}, {54, 70}};
    for (const Row& row : rows) {
        EXPECT_NEAR(zones.fillHeight(row.level, 70), row.height, 1e-9) << row.level;
    }
}

TEST(LevelGeometry, StepsAreMeasuredOnce) {
    LevelZones zones = measuredAt(70);
    zones.measureOnce(140);
    // 12 steps of 20/24; 15 of 50/30 above a lower zone of 40.
    EXPECT_NEAR(zones.fillHeight(12, 140), 10, 1e-9);
    EXPECT_NEAR(zones.fillHeight(39, 140), 65, 1e-9);
}

TEST(LevelGeometry, AMeterWithoutHeightMeasuresNothing) {
    LevelZones zones = measuredAt(0);
    zones.measureOnce(70);
    EXPECT_NEAR(zones.fillHeight(54, 70), 70, 1e-9);
}

TEST(LevelGeometry, NothingIsShownBeforeItIsMeasured) {
    EXPECT_EQ(LevelZones().fillHeight(12, 70), 0);
}

TEST(LevelGeometry, LevelsBeyondTheScaleRiseAboveTheMeter) {
    EXPECT_NEAR(measuredAt(70).fillHeight(60, 70), 80, 1e-9);
    EXPECT_NEAR(measuredAt(70).fillHeight(-12, 70), -10, 1e-9);
}

TEST(LevelGeometry, TheGreatestLevelsAreNumbersToo) {
    EXPECT_GT(measuredAt(70).fillHeight(INT64_MAX, 70), 1e18);
    EXPECT_LT(measuredAt(70).fillHeight(INT64_MIN, 70), -1e18);
}

} // namespace

} // namespace deckmate::test
