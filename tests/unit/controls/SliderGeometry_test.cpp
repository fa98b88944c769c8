#include "controls/SliderGeometry.h"

#include <gtest/gtest.h>
#include <limits>

namespace deckmate::test {

namespace {

constexpr SliderGeometry horizontal{{220, 24}, false};
constexpr SliderGeometry vertical{{24, 320}, true};

TEST(SliderGeometry, TheTrackIsAsLongAsTheSliderButForItsEnds) {
    EXPECT_EQ(horizontal.barRect(), (ViewRect{4, 10, 212, 4}));
    EXPECT_EQ(vertical.barRect(), (ViewRect{10, 4, 4, 312}));
}

TEST(SliderGeometry, TheFillIsTheFractionOfTheSliderWithoutEightPoints) {
    EXPECT_EQ(horizontalFill({4, 10, 212, 4}, 0.25, 220), (ViewRect{4, 10, 53, 4}));
    EXPECT_EQ(horizontalFill({4, 10, 212, 4}, 0, 220), (ViewRect{4, 10, 0, 4}));
}

TEST(SliderGeometry, AVerticalFillStandsOnTheTracksLowerEnd) {
    EXPECT_EQ(verticalFill({10, 4, 4, 312}, 0.25, 320), (ViewRect{10, 238, 4, 78}));
    EXPECT_EQ(verticalFill({10, 4, 4, 312}, 1, 320), (ViewRect{10, 4, 4, 312}));
}

TEST(SliderGeometry, TheKnobIsACircleOfCutSizeTwoPointsAboveItsMiddle) {
    // 0.85 * 21 = 17.85; 0.85 * 20 = 17; 0.85 * 16 = 13.6, of a side of 16.9.
    EXPECT_EQ(knobCircle({0, 0, 21, 21}), (ViewRect{2, 0, 17, 17}));
    EXPECT_EQ(knobCircle({10, 10, 20, 30}), (ViewRect{11.5, 14.5, 17, 17}));
    EXPECT_EQ(knobCircle({0, 0, 40, 16.9}).width, 13);
}

TEST(SliderGeometry, ThePaintedKnobIsCentredOnTheTrackAndStaysInside) {
    struct Row {
        double fraction;
        ViewPoint across; // of the horizontal one
        ViewPoint up;     // of the vertical one
    };
    const Row rows[] = {
        {0, {10, 12}, {12, 310}}, {0.5, {110, 12}, {12, 160}}, {1, {210, 12}, {12, 10}}};
    for (const Row& row : rows) {
        EXPECT_EQ(knobCircle(horizontal.knobRect(row.fraction)).centre(), row.across);
        EXPECT_EQ(knobCircle(vertical.knobRect(row.fraction)).centre(), row.up);
    }
}

TEST(SliderGeometry, APointMeansTheValueWhoseKnobIsThere) {
    EXPECT_DOUBLE_EQ(horizontal.fractionAt({10, 0}), 0);
    EXPECT_DOUBLE_EQ(horizontal.fractionAt({60, 99}), 0.25);
    EXPECT_DOUBLE_EQ(horizontal.fractionAt({210, 0}), 1);
    EXPECT_DOUBLE_EQ(vertical.fractionAt({0, 310}), 0);
    EXPECT_DOUBLE_EQ(vertical.fractionAt({0, 85}), 0.75);
    EXPECT_DOUBLE_EQ(vertical.fractionAt({0, 10}), 1);
}

TEST(SliderGeometry, APointBeyondTheTrackIsBeyondTheRange) {
    EXPECT_DOUBLE_EQ(horizontal.fractionAt({0, 0}), -0.05);
    EXPECT_DOUBLE_EQ(horizontal.fractionAt({220, 0}), 1.05);
}

TEST(SliderGeometry, ASliderShorterThanItsKnobHasNoWay) {
    const SliderGeometry tiny{{20, 6}, false};
    EXPECT_EQ(tiny.fractionAt({15, 3}), 0);
    EXPECT_EQ((SliderGeometry{{6, 6}, false}.barRect().width), 0);
}

TEST(SliderGeometry, FractionsOfARange) {
    EXPECT_DOUBLE_EQ(sliderFraction(0, -36, 36), 0.5);
    EXPECT_DOUBLE_EQ(sliderFraction(6, -36, 36), 42.0 / 72.0);
}

TEST(SliderGeometry, ARangeWithoutExtentIsAtItsMinimum) {
    EXPECT_EQ(sliderFraction(1, 1, 1), 0);
    EXPECT_EQ(sliderFraction(1, 2, 1), 0);
    EXPECT_EQ(sliderFraction(1, 0, std::numeric_limits<double>::quiet_NaN()), 0);
}

} // namespace

} // namespace deckmate::test
