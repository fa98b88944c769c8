#include "controls/TickGeometry.h"

#include "controls/SliderGeometry.h"

#include <gmock/gmock.h>

namespace deckmate::test {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(TickGeometry, LabelsAreSpreadFromThirtyBelowTheTopToThirtyAboveTheBottom) {
    // 160 high: middles 130, 80 and 30 from the bottom.
    EXPECT_THAT(
        tickFrames({50, 160}, {{20, 10}, {8, 10}, {24, 10}}),
        ElementsAre(ViewRect{30, 125, 20, 10}, ViewRect{42, 75, 8, 10}, ViewRect{26, 25, 24, 10}));
}

TEST(TickGeometry, ASingleLabelStandsThirtyBelowTheTop) {
    EXPECT_THAT(tickFrames({50, 160}, {{20, 10}}), ElementsAre(ViewRect{30, 125, 20, 10}));
}

TEST(TickGeometry, NoLabelsAreNoFrames) {
    EXPECT_THAT(tickFrames({50, 160}, {}), IsEmpty());
}

TEST(TickGeometry, AStripLowerThanItsMarginsTurnsTheLabelsAround) {
    // 40 high: the step is -20, the second middle 20 above the first.
    EXPECT_THAT(tickFrames({50, 40}, {{20, 10}, {20, 10}}),
                ElementsAre(ViewRect{30, 5, 20, 10}, ViewRect{30, 25, 20, 10}));
}

TEST(TickGeometry, OnlyTheFirstLabelMovesUpByHalfItsHeight) {
    // The step, 5, brings the second label's edge to 30 below the top again.
    EXPECT_THAT(
        tickFrames({50, 70}, {{20, 10}, {20, 10}, {20, 10}}),
        ElementsAre(ViewRect{30, 35, 20, 10}, ViewRect{30, 30, 20, 10}, ViewRect{30, 25, 20, 10}));
}

TEST(TickGeometry, LabelsStandBesideTheSliderPositionsTheyName) {
    // A strip reaches 20 points beyond the slider at either end; +36 at the top, -36 at the bottom.
    const SliderGeometry slider{{24, 320}, true};
    const std::vector<ViewRect> labels =
        tickFrames({50, 360}, std::vector<ViewSize>(7, ViewSize{20, 15}));
    for (std::size_t i = 0; i < labels.size(); ++i) {
        const double fraction = 1 - static_cast<double>(i) / 6;
        EXPECT_NEAR(360 - labels[i].centre().y - 20,
                    knobCircle(slider.knobRect(fraction)).centre().y, 1e-9)
            << i;
    }
}

TEST(TickGeometry, AClickFiveBelowALabelMeansItAndFiveAboveDoesnt) {
    const std::vector<ViewRect> frames = {{30, 125, 20, 10}};
    EXPECT_EQ(tickAt(frames, {40, 120}), 0U);
    EXPECT_EQ(tickAt(frames, {40, 140}), std::nullopt);
}

TEST(TickGeometry, AClickMeansALabelFromTenBelowUpToItsUpperEdge) {
    const std::vector<ViewRect> frames = {{30, 125, 20, 10}};
    EXPECT_EQ(tickAt(frames, {40, 115}), 0U);
    EXPECT_EQ(tickAt(frames, {40, 114.9}), std::nullopt);
    EXPECT_EQ(tickAt(frames, {40, 134.9}), 0U);
    EXPECT_EQ(tickAt(frames, {40, 135}), std::nullopt);
}

TEST(TickGeometry, AClickLeftOfALabelMeansItToo) {
    const std::vector<ViewRect> frames = {{30, 125, 20, 10}};
    EXPECT_EQ(tickAt(frames, {0, 130}), 0U);
    EXPECT_EQ(tickAt(frames, {-1, 130}), std::nullopt);
    EXPECT_EQ(tickAt(frames, {50, 130}), std::nullopt);
}

TEST(TickGeometry, WhereTwoLabelsAreMeantTheUpperOneWins) {
    const std::vector<ViewRect> frames = {{30, 30, 20, 10}, {30, 18, 20, 10}};
    EXPECT_EQ(tickAt(frames, {40, 25}), 0U);
    EXPECT_EQ(tickAt(frames, {40, 19}), 1U);
}

} // namespace

} // namespace deckmate::test
