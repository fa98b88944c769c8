#include "controls/LevelMeter.h"

#include "desktop/controls/ControlsTest.h"

#include <cmath>
#include <limits>

namespace deckmate::test {

namespace {

const QColor grey(0x3A, 0x3D, 0x42);
const QColor yellow(0xF2, 0xC9, 0x4C);
const QColor red(0xEB, 0x57, 0x57);

/// The first meter of the process is 70 high, so that the lower zone's steps are 20/24, the upper
/// one's 50/30 points.
class Meter : public ControlsTest {
protected:
    Meter() {
        meter.setGeometry(20, 20, 18, 70);
        desktop.show(window);
    }

    /// Points of the painted column that are not grey: how many, and how many grey ones are below.
    struct Bar {
        double height = 0;
        double below = 0;

        bool operator==(const Bar&) const = default;
    };
    Bar painted() {
        const QImage image = Desktop::painted(meter);
        const int column = image.width() / 2;
        int coloured = 0;
        int below = 0;
        for (int row = image.height() - 1; row >= 0; --row) {
            if (image.pixelColor(column, row) != grey) {
                ++coloured;
            } else if (coloured == 0) {
                ++below;
            }
        }
        return {coloured / image.devicePixelRatio(), below / image.devicePixelRatio()};
    }
    Bar paintedAt(std::int64_t level) {
        meter.setLevel(level);
        return painted();
    }

    LevelMeter meter{&window};
};

TEST_F(Meter, LevelsFillFromTheBottom) {
    EXPECT_EQ(paintedAt(12), (Bar{10, 0}));
    EXPECT_EQ(paintedAt(24), (Bar{20, 0}));
    EXPECT_EQ(paintedAt(39), (Bar{45, 0}));
    EXPECT_EQ(paintedAt(54), (Bar{70, 0}));
}

TEST_F(Meter, LevelZeroShowsNoBar) {
    EXPECT_EQ(paintedAt(0), (Bar{0, 70}));
}

TEST_F(Meter, ABarMayEndWithinAPoint) {
    // 13 * 20/24 is 10.83 points, to the nearest pixel.
    const double ratio = meter.devicePixelRatioF();
    EXPECT_EQ(paintedAt(13).height, std::round(13 * 20.0 / 24 * ratio) / ratio);
}

TEST_F(Meter, YellowBeginsAtMinus6AndRedAt0Decibels) {
    meter.setLevel(54);
    const QImage image = Desktop::painted(meter);
    // A seventh is 10 points: -6 dB is at 20 from the top, 0 dB at 10.
    EXPECT_EQ(colourAt(image, {9, 9.5}), red);
    EXPECT_EQ(colourAt(image, {9, 10}), yellow);
    EXPECT_EQ(colourAt(image, {9, 19.5}), yellow);
    const QColor green = colourAt(image, {9, 20});
    EXPECT_GT(green.green(), green.red() + 60);
}

TEST_F(Meter, LevelsAboveTheMaximumAreTheMaximum) {
    meter.setMaxValue(54);
    EXPECT_EQ(paintedAt(55), (Bar{70, 0}));
    EXPECT_EQ(meter.level(), 54);
    EXPECT_EQ(paintedAt(std::numeric_limits<std::int64_t>::max()), (Bar{70, 0}));
}

TEST_F(Meter, LevelsBelowTheMinimumAreTheMinimum) {
    EXPECT_EQ(paintedAt(-5), (Bar{0, 70}));
    EXPECT_EQ(meter.level(), 0);
}

TEST_F(Meter, WithTheUsualMaximumLevelsAbove54HideTheLowestPart) {
    // 36 * 50/30 + 20 is 80: ten points above the meter, ten uncovered below.
    EXPECT_EQ(paintedAt(60), (Bar{60, 10}));
    EXPECT_EQ(paintedAt(1000), paintedAt(100));
}

TEST_F(Meter, ALevelFromBeforeTheFirstLayoutIsShownByIt) {
    LevelMeter later;
    later.setFixedSize(18, 70);
    later.setLevel(12);
    EXPECT_EQ(later.level(), 12);
    const QImage image = Desktop::painted(later);
    EXPECT_NE(colourAt(image, {9, 60}), grey);
    EXPECT_EQ(colourAt(image, {9, 59.5}), grey);
}

TEST_F(Meter, ANewHeightKeepsTheStepsButMovesTheUpperZone) {
    meter.resize(18, 140);
    EXPECT_EQ(paintedAt(12), (Bar{10, 0}));
    EXPECT_EQ(paintedAt(39), (Bar{65, 0}));
}

TEST_F(Meter, AnotherMeterHasTheSameSteps) {
    LevelMeter other(&window);
    other.setGeometry(60, 20, 18, 140);
    other.show();
    other.setLevel(12);
    const QImage image = Desktop::painted(other);
    EXPECT_NE(colourAt(image, {9, 130}), grey);
    EXPECT_EQ(colourAt(image, {9, 129.5}), grey);
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
    EXPECT_EQ(paintedAt(20), (Bar{std::round(10 * 20.0 / 24 * meter.devicePixelRatioF()) /
                                      meter.devicePixelRatioF(),
                                  0}));
}

} // namespace

} // namespace deckmate::test
