#include "controls/AngleViewer.h"

#include "controls/ViewDrawing.h"
#include "desktop/controls/ControlsTest.h"

#include <gmock/gmock.h>
#include <iterator>
#include <vector>

namespace deckmate::test {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// 400 by 400: centre (200, 200), radius 160, thumb 20. Points have y downward unless they say so.
class AngleDial : public ControlsTest, public AngleViewerDelegate {
protected:
    AngleDial() {
        dial.setGeometry(20, 20, 400, 400);
        dial.setEnable(true);
        dial.setDelegate(this);
        desktop.show(window);
    }

    void angleViewer(AngleViewer& sender, double angleChanged) override {
        EXPECT_EQ(&sender, &dial);
        changes.push_back(angleChanged);
        anglesDuring.push_back(dial.angle());
    }
    /// Without a report.
    void startAt(double angle) {
        dial.setNewAngle(angle);
        changes.clear();
        anglesDuring.clear();
    }
    QPointF thumb() const { return fromView(dial.thumbPosition(), 400); }
    QRectF labelAt(std::size_t index) const {
        return fromView(dial.angleTextList()[index].frame, 400);
    }

    AngleViewer dial{&window};
    std::vector<double> changes;
    std::vector<double> anglesDuring;
};

constexpr std::size_t mono = 0;
constexpr std::size_t degrees90 = 3;

TEST_F(AngleDial, DraggingStraightBelowTheCentreGives150) {
    desktop.drag(dial, thumb(), {200, 390});
    EXPECT_EQ(dial.angle(), 150);
    EXPECT_EQ(dial.thumbPosition(), dial.geometry().point150Deg());
}

TEST_F(AngleDial, DraggingStraightLeftGives90) {
    desktop.drag(dial, thumb(), {10, 200});
    EXPECT_DOUBLE_EQ(dial.angle(), 90);
}

TEST_F(AngleDial, DraggingStraightAboveGives0) {
    startAt(60);
    desktop.drag(dial, thumb(), {200, 10});
    EXPECT_EQ(dial.angle(), 0);
}

TEST_F(AngleDial, DraggingStraightRightGives0) {
    startAt(60);
    desktop.drag(dial, thumb(), {390, 200});
    EXPECT_EQ(dial.angle(), 0);
    EXPECT_EQ(dial.thumbPosition(), dial.geometry().point0Deg());
}

TEST_F(AngleDial, DraggingToTheLowerRightGives150) {
    startAt(60);
    desktop.drag(dial, thumb(), {210, 390});
    EXPECT_EQ(dial.angle(), 150);
}

TEST_F(AngleDial, ADragEndsWhereItIsEvenOutsideTheView) {
    startAt(60);
    desktop.drag(dial, thumb(), {-15, 200});
    EXPECT_DOUBLE_EQ(dial.angle(), 90);
}

TEST_F(AngleDial, TheDelegateSeesFractionsWhileDragging) {
    desktop.drag(dial, thumb(), {100, 108});
    // 100 to the left, 92 up: atan(92 / 100) is 42.61406 degrees.
    EXPECT_NEAR(changes.back(), 47.38594, 1e-5);
    EXPECT_EQ(dial.angle(), changes.back());
}

TEST_F(AngleDial, TheDelegateHearsBeforeTheDialHasTheAngle) {
    dial.setNewAngle(30);
    dial.setNewAngle(75.5);
    EXPECT_THAT(changes, ElementsAre(30, 75.5));
    EXPECT_THAT(anglesDuring, ElementsAre(0, 30));
}

TEST_F(AngleDial, ADragThatMissesTheThumbMovesNothing) {
    desktop.drag(dial, {250, 100}, {250, 350});
    EXPECT_THAT(changes, IsEmpty());
}

TEST_F(AngleDial, WhereAClickIsReleasedCountsNotWhereItWasPressed) {
    desktop.drag(dial, {250, 100}, {100, 200});
    EXPECT_THAT(changes, ElementsAre(testing::DoubleEq(90)));
}

TEST_F(AngleDial, AClickOnTheLeftHalfTurnsToItsDirection) {
    desktop.click(dial, {100, 200});
    EXPECT_THAT(changes, ElementsAre(testing::DoubleEq(90)));
    EXPECT_NEAR(thumb().x(), 40, 1e-9);
    EXPECT_NEAR(thumb().y(), 200, 1e-9);
}

TEST_F(AngleDial, AClickOnTheUppermostRowTurnsToItsDirection) {
    desktop.click(dial, {0, 0});
    EXPECT_THAT(changes, ElementsAre(testing::DoubleEq(45)));
}

TEST_F(AngleDial, ReleasedJustOutsideTheViewAClickMovesNothing) {
    startAt(60);
    for (const QPointF place :
         {QPointF(-1, 200), QPointF(0, -1), QPointF(0, 400), QPointF(100, 410)}) {
        desktop.moveTo(dial, {250, 100});
        desktop.press();
        desktop.moveTo(dial, place);
        desktop.release();
        EXPECT_THAT(changes, IsEmpty()) << place.x() << ", " << place.y();
    }
}

TEST_F(AngleDial, AfterALabelAClickOnTheLeftHalfCounts) {
    desktop.click(dial, labelAt(degrees90).center());
    desktop.click(dial, {100, 100});
    EXPECT_THAT(changes, ElementsAre(90, testing::DoubleEq(45)));
}

TEST_F(AngleDial, AClickOnTheMiddleLineIsOnTheLeftHalf) {
    startAt(60);
    desktop.click(dial, {200, 100});
    EXPECT_EQ(dial.angle(), 0);
}

TEST_F(AngleDial, AClickOnTheRightHalfDoesNothing) {
    startAt(60);
    desktop.click(dial, {201, 100});
    desktop.click(dial, {300, 300});
    EXPECT_THAT(changes, IsEmpty());
}

TEST_F(AngleDial, AClickBeyondTheLowerEndDoesNothing) {
    startAt(60);
    desktop.click(dial, {200, 390});
    desktop.click(dial, {180, 300});
    EXPECT_THAT(changes, IsEmpty());
}

TEST_F(AngleDial, AClickOnTheThumbTurnsToItsDirection) {
    startAt(90);
    desktop.click(dial, {43, 194}); // 6 up on the thumb around (40, 200), 157 left
    EXPECT_THAT(changes, ElementsAre(testing::DoubleNear(87.8114, 1e-4)));
}

TEST_F(AngleDial, AClickOnALabelSetsItsAngleAndTellsOnce) {
    desktop.click(dial, labelAt(degrees90).center());
    EXPECT_THAT(changes, ElementsAre(90));
    desktop.click(dial, labelAt(degrees90).center());
    EXPECT_THAT(changes, ElementsAre(90));
    EXPECT_EQ(dial.angle(), 90);
}

TEST_F(AngleDial, ALabelIsPressedNotReleased) {
    desktop.moveTo(dial, labelAt(degrees90).center());
    desktop.press();
    EXPECT_EQ(dial.angle(), 90);
    desktop.release();
}

TEST_F(AngleDial, ALabelReachesTenPointsLeftAndBelow) {
    startAt(60);
    desktop.click(dial, labelAt(mono).bottomLeft() + QPointF(-7, 7));
    EXPECT_EQ(dial.angle(), 0);
}

TEST_F(AngleDial, ALabelReachesNotToTheRightNorAbove) {
    startAt(60);
    desktop.click(dial, labelAt(mono).topRight() + QPointF(4, 4));
    desktop.click(dial, labelAt(mono).topRight() + QPointF(-4, -4));
    EXPECT_THAT(changes, IsEmpty());
}

TEST_F(AngleDial, TheSecondClickOfADoubleClickMovesNothing) {
    desktop.click(dial, {100, 200});
    const PatientClicks patience;
    desktop.moveTo(dial, {100, 203});
    desktop.press();
    desktop.release();
    EXPECT_THAT(changes, ElementsAre(testing::DoubleEq(90)));
}

TEST_F(AngleDial, TheThirdClickInARowMovesNothingEither) {
    desktop.doubleClick(dial, {100, 200});
    const PatientClicks patience;
    desktop.moveTo(dial, {100, 203});
    desktop.press();
    desktop.release();
    EXPECT_THAT(changes, ElementsAre(testing::DoubleEq(90)));
}

TEST_F(AngleDial, TheRightButtonDoesNothing) {
    desktop.click(dial, {100, 200}, Desktop::Button::Right);
    EXPECT_THAT(changes, IsEmpty());
}

TEST_F(AngleDial, DisabledItDoesNothing) {
    startAt(60);
    dial.setEnable(false);
    desktop.click(dial, {100, 200});
    desktop.click(dial, labelAt(degrees90).center());
    desktop.drag(dial, thumb(), {100, 300});
    desktop.wheel(dial, {100, 200}, 3);
    EXPECT_THAT(changes, IsEmpty());
    EXPECT_EQ(dial.angle(), 60);
}

TEST_F(AngleDial, ANewSizeShowsTheUpperEndButKeepsTheAngle) {
    startAt(60);
    dial.resize(300, 300);
    EXPECT_EQ(dial.thumbPosition(), (ViewPoint{150, 270}));
    EXPECT_EQ(dial.angle(), 60);
    EXPECT_THAT(changes, IsEmpty());
}

TEST_F(AngleDial, ResetGoesTo0AndTells) {
    startAt(60);
    dial.resetTo0();
    EXPECT_THAT(changes, ElementsAre(0));
    EXPECT_EQ(dial.thumbPosition(), dial.geometry().point0Deg());
}

TEST_F(AngleDial, SettersTellNobody) {
    dial.setAngle(42);
    EXPECT_EQ(dial.angle(), 42);
    EXPECT_THAT(changes, IsEmpty());
}

TEST_F(AngleDial, ThumbAndArcUpToItAreWhite) {
    startAt(90);
    const QImage image = Desktop::painted(dial);
    EXPECT_EQ(colourAt(image, {40, 200}), QColor(Qt::white)) << "thumb";
    EXPECT_EQ(colourAt(image, {32, 200}), QColor(Qt::white)) << "thumb, 8 points from its middle";
    EXPECT_EQ(colourAt(image, {86.9, 86.9}), QColor(Qt::white)) << "arc at 45";
    EXPECT_EQ(colourAt(image, {61.4, 280}), trackColor()) << "arc at 120";
    EXPECT_EQ(colourAt(image, {313.1, 86.9}), background()) << "no arc at -45";
}

TEST_F(AngleDial, DisabledItIsAllGrey) {
    startAt(90);
    dial.setEnable(false);
    const QImage image = Desktop::painted(dial);
    EXPECT_EQ(colourAt(image, {40, 200}), trackColor());
    EXPECT_EQ(colourAt(image, {86.9, 86.9}), trackColor());
    EXPECT_EQ(colourAt(image, {61.4, 280}), trackColor());
}

TEST_F(AngleDial, LabelsStandLeftOfTheirPointsOnTheArc) {
    // Each one's right edge is 8 left of the arc's point, its middle level with it; then the
    // offset.
    const double cosine30 = 160 * 0.8660254037844386;
    const QPointF places[] = {
        {200 - 8 + 25, 40 - 20},            // 0: (200, 40)
        {120 - 8 - 3, 200 - cosine30 - 14}, // 30: 80 left, cosine30 up
        {200 - cosine30 - 8 - 5, 120 - 5},  // 60: cosine30 left, 80 up
        {40 - 8 - 5, 200},                  // 90: (40, 200)
        {200 - cosine30 - 8 - 5, 280 + 10}, // 120: cosine30 left, 80 down
        {120 - 8 + 5, 200 + cosine30 + 18}, // 150: 80 left, cosine30 down
    };
    Desktop::painted(dial);
    for (std::size_t i = 0; i < std::size(places); ++i) {
        EXPECT_NEAR(labelAt(i).right(), places[i].x(), 1e-9) << i;
        EXPECT_NEAR(labelAt(i).center().y(), places[i].y(), 1e-9) << i;
    }
}

TEST_F(AngleDial, TheArcIsFourPointsWide) {
    startAt(150);
    const QImage image = Desktop::painted(dial);
    // Where it crosses the middle's height it goes from 38 to 42.
    EXPECT_EQ(colourLeftOf(image, {38, 200}), background());
    EXPECT_GT(colourRightOf(image, {38, 200}).red(), 245);
    EXPECT_GT(colourLeftOf(image, {42, 200}).red(), 245);
    EXPECT_LT(colourRightOf(image, {42, 200}).red(), 45);
}

TEST_F(AngleDial, TheArcsEndIsRound) {
    startAt(90);
    const QImage image = Desktop::painted(dial);
    // Half a circle of radius 2 around (200, 40), of which a square's corner is not a part.
    EXPECT_GT(colourAt(image, {201.25, 39.75}).red(), 200);
    EXPECT_LT(colourAt(image, {201.75, 41.75}).red(), 150);
    EXPECT_EQ(colourAt(image, {202.75, 40}), background());
}

TEST_F(AngleDial, DisabledLabelsAreHalfWhite) {
    dial.setFont(thickFont());
    dial.setEnable(false);
    // Half of 255 over half of the background's 0x21; all else is 88.
    EXPECT_NEAR(brightest(Desktop::painted(dial)), 144, 1);
}

TEST_F(AngleDial, TheScreenShowsEachNewAngle) {
    const QPointF left(40, 200);
    ASSERT_TRUE(isShown(dial, left, trackColor()));
    dial.setNewAngle(90);
    EXPECT_TRUE(isShown(dial, left, Qt::white)) << "set";
    dial.resetTo0();
    EXPECT_TRUE(isShown(dial, left, trackColor())) << "reset";
    desktop.drag(dial, thumb(), {200, 390});
    EXPECT_TRUE(isShown(dial, {47, 200}, background())) << "beside the arc";
    EXPECT_TRUE(isShown(dial, {120, 338}, Qt::white)) << "dragged to the end";
    dial.setEnable(false);
    dial.update();
    EXPECT_TRUE(isShown(dial, {120, 338}, trackColor())) << "disabled";
}

TEST_F(AngleDial, KeysTurnByOneAndTen) {
    startAt(60.5);
    desktop.tap("Tab");
    ASSERT_TRUE(dial.hasFocus());
    desktop.tap("Right");
    desktop.tap("Up");
    desktop.tap("Page_Up");
    desktop.tap("Left");
    desktop.tap("Page_Down");
    EXPECT_THAT(changes, ElementsAre(61.5, 62.5, 72.5, 71.5, 61.5));
    EXPECT_NEAR(dial.thumbPosition().x, dial.geometry().pointAt(61.5).x, 1e-9);
}

TEST_F(AngleDial, HomeAndEndGoToTheEndsAndNoFurther) {
    startAt(60);
    desktop.tap("Tab");
    desktop.tap("End");
    desktop.tap("Up");
    desktop.tap("Home");
    desktop.tap("Page_Down");
    EXPECT_THAT(changes, ElementsAre(150, 0));
}

TEST_F(AngleDial, TheWheelTurnsByOneANotch) {
    startAt(60);
    desktop.wheel(dial, {300, 300}, 2);
    desktop.wheel(dial, {300, 300}, -1);
    EXPECT_THAT(changes, ElementsAre(61, 62, 61));
}

TEST_F(AngleDial, FocusIsSeenWhenTheKeyboardGaveItOnly) {
    startAt(90);
    const QImage unfocused = Desktop::painted(dial);
    desktop.click(dial, {40, 200});
    EXPECT_EQ(Desktop::painted(dial), unfocused);
    desktop.tap("Tab");
    EXPECT_NE(Desktop::painted(dial), unfocused);
}

TEST_F(AngleDial, DisabledItTakesNoFocus) {
    dial.setEnable(false);
    desktop.tap("Tab");
    EXPECT_FALSE(dial.hasFocus());
}

TEST_F(AngleDial, DisabledItGivesTheFocusAway) {
    desktop.tap("Tab");
    ASSERT_TRUE(dial.hasFocus());
    dial.setEnable(false);
    EXPECT_FALSE(dial.hasFocus());
}

TEST_F(AngleDial, DisabledWithNobodyElseToTakeTheFocusItHasNone) {
    before.setFocusPolicy(Qt::NoFocus);
    desktop.tap("Tab");
    ASSERT_TRUE(dial.hasFocus());
    dial.setEnable(false);
    EXPECT_FALSE(dial.hasFocus());
}

} // namespace

} // namespace deckmate::test
