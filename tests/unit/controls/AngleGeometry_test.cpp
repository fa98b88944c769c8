#include "controls/AngleGeometry.h"

#include <gtest/gtest.h>

namespace deckmate::test {

namespace {

// 400 by 300: centre (200, 150), radius 160, thumb 20.
constexpr AngleGeometry dial{{400, 300}};
constexpr double tolerance = 1e-9;

void expectNear(ViewPoint actual, ViewPoint expected) {
    EXPECT_NEAR(actual.x, expected.x, tolerance);
    EXPECT_NEAR(actual.y, expected.y, tolerance);
}

TEST(AngleGeometry, ArcAndThumbFollowTheWidthAlone) {
    EXPECT_EQ(dial.centre(), (ViewPoint{200, 150}));
    EXPECT_DOUBLE_EQ(dial.RADIUS_OF_BIG_CURVE(), 160);
    EXPECT_DOUBLE_EQ(dial.THUMB_SIZE(), 20);
    EXPECT_DOUBLE_EQ((AngleGeometry{{400, 50}}.RADIUS_OF_BIG_CURVE()), 160);
}

TEST(AngleGeometry, TheEndsAreStraightAboveAndOnTheLowerLeft) {
    expectNear(dial.point0Deg(), {200, 310});
    expectNear(dial.point150Deg(), {120, 150 - 138.56406460551018}); // 160 * sqrt(3) / 2
}

TEST(AngleGeometry, AnglesGrowCounterClockwise) {
    expectNear(dial.pointAt(0), {200, 310});
    expectNear(dial.pointAt(30), {120, 288.5640646055102});
    expectNear(dial.pointAt(90), {40, 150});
    expectNear(dial.pointAt(150), {120, 11.435935394489828});
}

TEST(AngleGeometry, APointMeansTheDirectionItLiesIn) {
    struct Row {
        ViewPoint point;
        double angle;
    };
    const Row rows[] = {
        {{200, 151}, 0},   // straight above
        {{100, 150}, 90},  // straight left
        {{200, 50}, 180},  // straight below
        {{300, 150}, -90}, // straight right
        {{300, 250}, -45}, // upper right
        {{100, 250}, 45},  // upper left
        {{100, 50}, 135},  // lower left
        {{300, 50}, 225},  // lower right
        {{200, 150}, -90}, // the centre has no direction: counts as right
    };
    for (const Row& row : rows) {
        EXPECT_NEAR(dial.angleOf(row.point), row.angle, tolerance)
            << row.point.x << ", " << row.point.y;
    }
}

TEST(AngleGeometry, TheThumbIsOnTheArcHoweverFarThePointerIs) {
    expectNear(dial.pointToward({199, 150}), {40, 150});
    expectNear(dial.pointToward({-5000, 150}), {40, 150});
    expectNear(dial.pointToward({200, 4000}), {200, 310});
}

TEST(AngleGeometry, TheThumbIsHeldBySquareAroundIt) {
    const ViewRect square = dial.thumbRect({200, 310});
    EXPECT_EQ(square, (ViewRect{190, 300, 20, 20}));
    EXPECT_TRUE(square.contains({190, 300}));
    EXPECT_TRUE(square.contains({209.9, 319.9}));
    EXPECT_FALSE(square.contains({210, 310}));
    EXPECT_FALSE(square.contains({200, 320}));
}

TEST(AngleGeometry, ALabelStandsEightPointsLeftOfItsPlaceOnTheArc) {
    // 90 degrees: the arc is at (40, 150) from either edge; 26 by 14, 5 more to the left.
    const ViewRect frame = angleLabelFrame(dial, 90, {-5, 0}, {26, 14});
    EXPECT_NEAR(frame.x, 40 - 26 - 8 - 5, tolerance);
    EXPECT_NEAR(frame.y, 143, tolerance);
    EXPECT_EQ(frame.width, 26);
    EXPECT_EQ(frame.height, 14);
}

TEST(AngleGeometry, ALabelsOffsetCountsDownward) {
    // MONO: the arc is 10 points above the view's top... of a view 300 high: 150 - 160 = -10 down.
    const ViewRect frame = angleLabelFrame(dial, 0, {25, -20}, {40, 16});
    EXPECT_NEAR(frame.x, 200 - 40 - 8 + 25, tolerance);
    EXPECT_NEAR(frame.y, 300 - 16 - (-10 - 8 - 20), tolerance);
}

TEST(AngleGeometry, ALabelIsHitTenPointsLeftAndBelowButNotRightOrAbove) {
    const ViewRect hit = angleLabelHitRect({50, 100, 30, 16});
    EXPECT_TRUE(hit.contains({40, 90}));
    EXPECT_FALSE(hit.contains({39, 95}));
    EXPECT_FALSE(hit.contains({45, 89}));
    EXPECT_TRUE(hit.contains({79.9, 115.9}));
    EXPECT_FALSE(hit.contains({80, 110}));
    EXPECT_FALSE(hit.contains({60, 116}));
}

} // namespace

} // namespace deckmate::test
