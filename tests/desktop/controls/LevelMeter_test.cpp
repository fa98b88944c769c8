#include "controls/LevelMeter.h"

#include "desktop/controls/ControlsTest.h"

#include <cmath>
#include <limits>

namespace deckmate::test {

namespace {

const QColor grey(0x3A, 0x3D, 0x42);
const QColor yellow(0xF2, 0xC9, 0x4C);
const QColor red(0xEB, 0x57, 0x57);

/// Whether, in the middle of a meter, all pixels wholly inside the bar are coloured and all wholly
/// outside are grey: the bar is `height` points high and begins `below` points above the lower end.
testing::AssertionResult showsBar(const QImage& image, double height, double below = 0) {
    const double ratio = image.devicePixelRatio();
    // Meters are whole points high; the image has a pixel more where that is no whole one.
    const double bottom = std::floor(image.deviceIndependentSize().height()) - below;
    const double top = bottom - height;
    constexpr double tolerance = 1e-9; // of a pixel's edge, which is computed
    for (int row = 0; row < image.height(); ++row) {
        const double upper = row / ratio;
        const double lower = (row + 1) / ratio;
        const bool isInside = upper >= top - tolerance && lower <= bottom + tolerance;
        const bool isOutside = lower <= top + tolerance || upper >= bottom - tolerance;
        const bool isGrey = image.pixelColor(image.width() / 2, row) == grey;
        if (isGrey ? isInside : isOutside) {
            return testing::AssertionFailure() << "at " << upper << " points from the top";
        }
    }
    return testing::AssertionSuccess();
}

/// The first meter of the process is 70 high, so that the lower zone's steps are 20/24, the upper
/// one's 50/30 points.
class Meter : public ControlsTest {
protected:
    Meter() {
        meter.setGeometry(20, 20, 18, 70);
        desktop.show(window);
    }

    QImage paintedAt(std::int64_t level) {
        meter.setLevel(level);
        return Desktop::painted(meter);
    }

    LevelMeter meter{&window};
};

TEST_F(Meter, LevelsFillFromTheBottom) {
    EXPECT_TRUE(showsBar(paintedAt(12), 10));
    EXPECT_TRUE(showsBar(paintedAt(24), 20));
    EXPECT_TRUE(showsBar(paintedAt(39), 45));
    EXPECT_TRUE(showsBar(paintedAt(54), 70));
}

TEST_F(Meter, LevelZeroShowsNoBar) {
    EXPECT_TRUE(showsBar(paintedAt(0), 0, 70));
}

TEST_F(Meter, ABarMayEndWithinAPoint) {
    const QImage image = paintedAt(13);
    // 13 * 20/24 is 10.83 points. The pixel that the edge runs through is on the bar's side if most
    // of it is.
    const double edge = (70 - 13 * 20.0 / 24) * image.devicePixelRatio();
    const auto first = static_cast<int>(std::lround(edge));
    EXPECT_EQ(image.pixelColor(image.width() / 2, first - 1), grey);
    EXPECT_NE(image.pixelColor(image.width() / 2, first), grey);
}

TEST_F(Meter, YellowBeginsAtMinus6AndRedAt0Decibels) {
    meter.setLevel(54);
    const QImage image = Desktop::painted(meter);
    // A seventh is 10 points: -6 dB is at 20 from the top, 0 dB at 10.
    EXPECT_EQ(colourAbove(image, {9, 10}), red);
    EXPECT_EQ(colourBelow(image, {9, 10}), yellow);
    EXPECT_EQ(colourAbove(image, {9, 20}), yellow);
    const QColor green = colourBelow(image, {9, 20});
    EXPECT_GT(green.green(), green.red() + 60);
}

TEST_F(Meter, LevelsAboveTheMaximumAreTheMaximum) {
    meter.setMaxValue(54);
    EXPECT_TRUE(showsBar(paintedAt(55), 70));
    EXPECT_EQ(meter.level(), 54);
    EXPECT_TRUE(showsBar(paintedAt(std::numeric_limits<std::int64_t>::max()), 70));
}

TEST_F(Meter, LevelsBelowTheMinimumAreTheMinimum) {
    EXPECT_TRUE(showsBar(paintedAt(-5), 0, 70));
    EXPECT_EQ(meter.level(), 0);
}

TEST_F(Meter, WithTheUsualMaximumLevelsAbove54HideTheLowestPart) {
    // 36 * 50/30 + 20 is 80: ten points above the meter, ten uncovered below.
    EXPECT_TRUE(showsBar(paintedAt(60), 60, 10));
    EXPECT_EQ(paintedAt(1000), paintedAt(100));
}

TEST_F(Meter, ALevelFromBeforeTheFirstLayoutIsShownByIt) {
    LevelMeter later;
    later.setFixedSize(18, 70);
    later.setLevel(12);
    EXPECT_EQ(later.level(), 12);
    EXPECT_TRUE(showsBar(Desktop::painted(later), 10));
}

TEST_F(Meter, ANewHeightKeepsTheStepsButMovesTheUpperZone) {
    meter.resize(18, 140);
    EXPECT_TRUE(showsBar(paintedAt(12), 10));
    EXPECT_TRUE(showsBar(paintedAt(39), 65));
}

TEST_F(Meter, AnotherMeterHasTheSameSteps) {
    LevelMeter other(&window);
    other.setGeometry(60, 20, 18, 140);
    other.show();
    other.setLevel(12);
    EXPECT_TRUE(showsBar(Desktop::painted(other), 10));
}

TEST_F(Meter, TheScreenShowsANewLevelSoon) {
    meter.setLevel(54);
    EXPECT_TRUE(Desktop::waitFor([&] { return colourAt(Desktop::shown(meter), {9, 5}) == red; }));
}

TEST_F(Meter, ANewMaximumOrMinimumLeavesTheLevel) {
    meter.setLevel(39);
    meter.setMaxValue(10);
    meter.setMinValue(5);
    EXPECT_EQ(meter.level(), 39);
    EXPECT_TRUE(showsBar(paintedAt(20), 10 * 20.0 / 24));
}

} // namespace

} // namespace deckmate::test
