#include "controls/H8GainSlider.h"
#include "controls/H8Slider.h"
#include "controls/H8SliderCell.h"
#include "desktop/controls/ControlsTest.h"

#include <gmock/gmock.h>
#include <limits>
#include <utility>
#include <vector>

#include <QDialog>
#include <QPainter>

namespace deckmate::test {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

/// What the action was called for, and the value it found.
using Actions = std::vector<std::pair<ControlEvent, double>>;

void note(Slider& slider, Actions& actions) {
    slider.setAction([&](Slider& sender) {
        EXPECT_EQ(&sender, &slider);
        actions.emplace_back(sender.currentEvent(), sender.doubleValue());
    });
}

/// 220 by 24: the knob's middle goes from 10 to 210; 2 points are a hundredth.
class HorizontalSlider : public ControlsTest {
protected:
    HorizontalSlider() {
        slider.setGeometry(20, 20, 220, 24);
        slider.cell()->setSliderEnabled(true);
        note(slider, actions);
        desktop.show(window);
    }

    H8Slider slider{&window};
    Actions actions;
};

TEST_F(HorizontalSlider, AClickOnTheTrackBringsTheKnobThere) {
    desktop.click(slider, {60, 12});
    EXPECT_THAT(actions, ElementsAre(Pair(ControlEvent::LeftMouseDown, 0.25),
                                     Pair(ControlEvent::LeftMouseUp, 0.25)));
}

TEST_F(HorizontalSlider, ADragFollowsThePointer) {
    desktop.drag(slider, {10, 12}, {170, 12});
    EXPECT_THAT(actions, ElementsAre(Pair(ControlEvent::LeftMouseDown, 0.0),
                                     Pair(ControlEvent::LeftMouseDragged, testing::DoubleEq(0.2)),
                                     Pair(ControlEvent::LeftMouseDragged, testing::DoubleEq(0.4)),
                                     Pair(ControlEvent::LeftMouseDragged, testing::DoubleEq(0.6)),
                                     Pair(ControlEvent::LeftMouseDragged, testing::DoubleEq(0.8)),
                                     Pair(ControlEvent::LeftMouseUp, testing::DoubleEq(0.8))));
}

TEST_F(HorizontalSlider, APressOnTheKnobDoesNotMoveIt) {
    slider.setDoubleValue(0.5);
    desktop.click(slider, {116, 15});
    EXPECT_THAT(actions, ElementsAre(Pair(ControlEvent::LeftMouseDown, 0.5),
                                     Pair(ControlEvent::LeftMouseUp, 0.5)));
}

TEST_F(HorizontalSlider, TheKnobIsDraggedByThePointItWasTakenAt) {
    slider.setDoubleValue(0.5);
    desktop.drag(slider, {116, 12}, {136, 12});
    EXPECT_DOUBLE_EQ(slider.doubleValue(), 0.6);
}

TEST_F(HorizontalSlider, ADragBeyondTheEndsStaysInTheRange) {
    desktop.drag(slider, {110, 12}, {-10, 12});
    EXPECT_EQ(slider.doubleValue(), 0);
    desktop.drag(slider, {110, 12}, {235, 12});
    EXPECT_EQ(slider.doubleValue(), 1);
}

TEST_F(HorizontalSlider, ADragGoesOnAboveAndBelowTheSlider) {
    desktop.drag(slider, {10, 12}, {110, 200});
    EXPECT_DOUBLE_EQ(slider.doubleValue(), 0.5);
}

TEST_F(HorizontalSlider, NotContinuousItReportsTheReleaseOnly) {
    slider.setContinuous(false);
    desktop.drag(slider, {10, 12}, {60, 12});
    EXPECT_THAT(actions, ElementsAre(Pair(ControlEvent::LeftMouseUp, 0.25)));
}

TEST_F(HorizontalSlider, APressSetsSeekingAndTheOwnerClearsIt) {
    EXPECT_FALSE(slider.isSeeking());
    desktop.moveTo(slider, {60, 12});
    desktop.press();
    EXPECT_TRUE(slider.isSeeking());
    desktop.release();
    EXPECT_TRUE(slider.isSeeking());
    slider.setIsSeeking(false);
    EXPECT_FALSE(slider.isSeeking());
}

TEST_F(HorizontalSlider, SeekingIsSetBeforeTheFirstReport) {
    std::vector<bool> seeking;
    slider.setAction([&](Slider&) { seeking.push_back(slider.isSeeking()); });
    desktop.click(slider, {60, 12});
    EXPECT_THAT(seeking, ElementsAre(true, true));
}

TEST_F(HorizontalSlider, TheRightButtonDoesNothing) {
    desktop.click(slider, {60, 12}, Desktop::Button::Right);
    EXPECT_THAT(actions, IsEmpty());
    EXPECT_FALSE(slider.isSeeking());
}

TEST_F(HorizontalSlider, DisabledItDoesNothing) {
    slider.setEnabled(false);
    desktop.click(slider, {60, 12});
    desktop.wheel(slider, {60, 12}, 1);
    desktop.tap("Tab");
    desktop.tap("Right");
    EXPECT_THAT(actions, IsEmpty());
    EXPECT_FALSE(slider.isSeeking());
    EXPECT_EQ(slider.doubleValue(), 0);
}

TEST_F(HorizontalSlider, DisabledDuringADragItIsLetGo) {
    desktop.moveTo(slider, {60, 12});
    desktop.press();
    slider.setEnabled(false);
    slider.setEnabled(true);
    actions.clear();
    desktop.moveTo(slider, {110, 12});
    desktop.release();
    EXPECT_THAT(actions, IsEmpty());
    EXPECT_DOUBLE_EQ(slider.doubleValue(), 0.25);
}

TEST_F(HorizontalSlider, DisabledDuringAPressItSeeksNoMore) {
    desktop.moveTo(slider, {60, 12});
    desktop.press();
    slider.setEnabled(false);
    desktop.release();
    EXPECT_FALSE(slider.isSeeking());
}

TEST_F(HorizontalSlider, HiddenDuringAPressItSeeksNoMore) {
    desktop.moveTo(slider, {60, 12});
    desktop.press();
    slider.hide();
    desktop.release();
    EXPECT_FALSE(slider.isSeeking());
}

TEST_F(HorizontalSlider, BlockedByADialogDuringAPressItIsLetGo) {
    desktop.moveTo(slider, {60, 12});
    desktop.press();
    QDialog dialog(&window);
    dialog.setWindowModality(Qt::WindowModal);
    desktop.show(dialog);
    EXPECT_FALSE(slider.isTracking());
    EXPECT_FALSE(slider.isSeeking());
    desktop.release();
}

TEST_F(HorizontalSlider, KeysStepByAHundredthUnlessToldOtherwise) {
    slider.setDoubleValue(0.5);
    desktop.tap("Tab");
    desktop.tap("Right");
    slider.setStep(0.125);
    desktop.tap("Down");
    EXPECT_THAT(actions, ElementsAre(Pair(ControlEvent::KeyDown, testing::DoubleEq(0.51)),
                                     Pair(ControlEvent::KeyDown, testing::DoubleEq(0.385))));
}

TEST_F(HorizontalSlider, PageKeysStepByTenAndHomeAndEndGoToTheEnds) {
    slider.setDoubleValue(0.5);
    desktop.tap("Tab");
    desktop.tap("Page_Up");
    desktop.tap("Page_Down");
    desktop.tap("End");
    desktop.tap("Right");
    desktop.tap("Home");
    EXPECT_THAT(actions,
                ElementsAre(Pair(ControlEvent::KeyDown, testing::DoubleEq(0.6)),
                            Pair(ControlEvent::KeyDown, testing::DoubleEq(0.5)),
                            Pair(ControlEvent::KeyDown, 1), Pair(ControlEvent::KeyDown, 0)));
}

TEST_F(HorizontalSlider, KeysWithControlHeldAreOthers) {
    desktop.tap("Tab");
    desktop.tap("Right", {"Control_L"});
    EXPECT_THAT(actions, IsEmpty());
}

TEST_F(HorizontalSlider, TheWheelStepsByNotches) {
    desktop.wheel(slider, {60, 12}, 2);
    EXPECT_THAT(actions, ElementsAre(Pair(ControlEvent::ScrollWheel, testing::DoubleEq(0.01)),
                                     Pair(ControlEvent::ScrollWheel, testing::DoubleEq(0.02))));
}

TEST_F(HorizontalSlider, AWheelTurnedToTheRightRaisesAndToTheLeftLowers) {
    desktop.wheelSideways(slider, {60, 12}, 2);
    desktop.wheelSideways(slider, {60, 12}, -1);
    EXPECT_THAT(actions, ElementsAre(Pair(ControlEvent::ScrollWheel, testing::DoubleEq(0.01)),
                                     Pair(ControlEvent::ScrollWheel, testing::DoubleEq(0.02)),
                                     Pair(ControlEvent::ScrollWheel, testing::DoubleEq(0.01))));
}

TEST_F(HorizontalSlider, AValueSetByTheProgramCallsNoAction) {
    slider.setDoubleValue(0.7);
    EXPECT_EQ(slider.doubleValue(), 0.7);
    EXPECT_THAT(actions, IsEmpty());
}

TEST_F(HorizontalSlider, ValuesStayInTheRangeAndAreNumbers) {
    slider.setDoubleValue(2);
    EXPECT_EQ(slider.doubleValue(), 1);
    slider.setDoubleValue(std::numeric_limits<double>::quiet_NaN());
    EXPECT_EQ(slider.doubleValue(), 1);
    slider.setDoubleValue(-std::numeric_limits<double>::infinity());
    EXPECT_EQ(slider.doubleValue(), 0);
}

TEST_F(HorizontalSlider, ANewRangeTakesTheValueAlong) {
    slider.setMaxValue(100);
    slider.setDoubleValue(60);
    slider.setMaxValue(50);
    EXPECT_EQ(slider.doubleValue(), 50);
    slider.setMinValue(55);
    EXPECT_EQ(slider.doubleValue(), 55);
    slider.setMinValue(std::numeric_limits<double>::quiet_NaN());
    EXPECT_EQ(slider.minValue(), 55);
}

TEST_F(HorizontalSlider, TheIntegerValueIsCutTowardZero) {
    slider.setMinValue(-36);
    slider.setMaxValue(36);
    slider.setDoubleValue(-5.9);
    EXPECT_EQ(slider.integerValue(), -5);
    slider.setDoubleValue(5.9);
    EXPECT_EQ(slider.integerValue(), 5);
    slider.setMaxValue(1e300);
    slider.setDoubleValue(1e300);
    EXPECT_EQ(slider.integerValue(), INT64_MAX);
}

TEST_F(HorizontalSlider, TheTrackIsWhiteUpToTheValue) {
    slider.setDoubleValue(0.5);
    const QImage image = Desktop::painted(slider);
    EXPECT_EQ(colourAt(image, {20, 12}), QColor(Qt::white));
    EXPECT_EQ(colourAbove(image, {20, 10}), background());
    EXPECT_EQ(colourBelow(image, {20, 10}), QColor(Qt::white));
    EXPECT_EQ(colourAbove(image, {20, 14}), QColor(Qt::white));
    EXPECT_EQ(colourBelow(image, {20, 14}), background());
    EXPECT_EQ(colourAt(image, {200, 12}), trackColor());
}

TEST_F(HorizontalSlider, TheKnobIsSeventeenPointsAcross) {
    slider.setDoubleValue(0.5);
    const QImage image = Desktop::painted(slider);
    EXPECT_EQ(colourAt(image, {110, 4.5}), QColor(Qt::white));
    EXPECT_EQ(colourAt(image, {110, 19.5}), QColor(Qt::white));
    EXPECT_EQ(colourAt(image, {102.5, 12}), QColor(Qt::white));
    EXPECT_EQ(colourAt(image, {117.5, 12}), QColor(Qt::white));
    EXPECT_NE(colourAt(image, {110, 2.5}), QColor(Qt::white));
    EXPECT_NE(colourAt(image, {110, 21}), QColor(Qt::white));
    EXPECT_NE(colourAt(image, {119.5, 12}), QColor(Qt::white));
}

TEST_F(HorizontalSlider, WithItsCellDisabledAllIsInTheTracksColour) {
    slider.setDoubleValue(0.5);
    slider.cell()->setSliderEnabled(false);
    const QImage image = Desktop::painted(slider);
    for (const QPointF place :
         {QPointF(20, 12), QPointF(110, 12), QPointF(110, 5), QPointF(200, 12)}) {
        EXPECT_EQ(colourAt(image, place), trackColor());
    }
}

TEST_F(HorizontalSlider, TheFillAloneEndsAtTheFractionOfTheWidthWithoutEight) {
    slider.setDoubleValue(0.25);
    QImage image(220, 24, QImage::Format_RGB32);
    image.fill(Qt::black);
    QPainter painter(&image);
    slider.cell()->drawBarInside(painter, {4, 10, 212, 4}, true);
    painter.end();
    // From 4 over 0.25 * 212, that is to 57; its end is round.
    EXPECT_EQ(image.pixelColor(54, 12), QColor(Qt::white));
    EXPECT_EQ(image.pixelColor(58, 12), trackColor());
    EXPECT_EQ(image.pixelColor(212, 12), trackColor());
    EXPECT_EQ(image.pixelColor(217, 12), QColor(Qt::black));
}

TEST_F(HorizontalSlider, ACellOutlivesItsSlider) {
    const auto cell = std::make_shared<H8SliderCell>();
    {
        H8Slider shortLived;
        shortLived.setCell(cell);
        EXPECT_EQ(cell->controlView(), &shortLived);
    }
    EXPECT_EQ(cell->controlView(), nullptr);
    cell->setSliderEnabled(true);
}

TEST_F(HorizontalSlider, OnlyTheKeyboardsFocusIsSeen) {
    const QImage unfocused = Desktop::painted(slider);
    desktop.click(slider, {10, 12});
    EXPECT_EQ(Desktop::painted(slider), unfocused);
    desktop.tap("Tab");
    EXPECT_NE(Desktop::painted(slider), unfocused);
}

TEST_F(HorizontalSlider, TheRingHasTheColourOfFocusAndIsHalfOnTheKnob) {
    slider.setDoubleValue(0.5);
    slider.setFocus(Qt::TabFocusReason);
    const QImage image = Desktop::painted(slider);
    // The knob's circle is 17 across, around (110, 12); the line is 3 wide.
    EXPECT_EQ(colourAt(image, {110, 3.5}), QColor("#8FA3BF"));
    EXPECT_EQ(colourAt(image, {110, 6.5}), QColor(Qt::white));
}

TEST_F(HorizontalSlider, TheScreenShowsEachChange) {
    const QPointF place(60, 12);
    ASSERT_TRUE(isShown(slider, place, trackColor()));
    slider.setDoubleValue(0.5);
    EXPECT_TRUE(isShown(slider, place, Qt::white)) << "value";
    slider.setMaxValue(4);
    EXPECT_TRUE(isShown(slider, place, trackColor())) << "maximum";
    slider.setMinValue(-2);
    EXPECT_TRUE(isShown(slider, place, Qt::white)) << "minimum";
    slider.cell()->setSliderEnabled(false);
    EXPECT_TRUE(isShown(slider, place, trackColor())) << "enabled";
    const auto cell = std::make_shared<H8SliderCell>();
    cell->setSliderEnabled(true);
    slider.setCell(cell);
    EXPECT_TRUE(isShown(slider, place, Qt::white)) << "cell";
    cell->setIsVertical(true);
    EXPECT_TRUE(isShown(slider, place, background())) << "direction";
}

TEST_F(HorizontalSlider, TheScreenShowsTheFocusComeAndGo) {
    const QPointF ring(10, 3.5);
    ASSERT_TRUE(isShown(slider, {10, 6.5}, Qt::white));
    desktop.tap("Tab");
    EXPECT_TRUE(isShown(slider, ring, QColor("#8FA3BF")));
    before.setFocus(Qt::TabFocusReason);
    EXPECT_TRUE(Desktop::waitFor(
        [&] { return colourAt(Desktop::shown(slider), ring) != QColor("#8FA3BF"); }));
}

TEST_F(HorizontalSlider, FocusGivenByTheProgramIsSeen) {
    slider.setFocus(Qt::OtherFocusReason);
    EXPECT_TRUE(slider.showsFocus());
    before.setFocus(Qt::OtherFocusReason);
    EXPECT_FALSE(slider.showsFocus());
}

TEST_F(HorizontalSlider, FocusGivenByAClickIsNotSeen) {
    slider.setFocus(Qt::MouseFocusReason);
    EXPECT_FALSE(slider.showsFocus());
}

TEST_F(HorizontalSlider, TheMenuBarsFocusLeavesTheRingAsItWas) {
    desktop.tap("Tab");
    before.setFocus(Qt::MenuBarFocusReason);
    EXPECT_TRUE(slider.showsFocus());
    slider.setFocus(Qt::MenuBarFocusReason);
    EXPECT_TRUE(slider.showsFocus());
    before.setFocus(Qt::MouseFocusReason);
    slider.setFocus(Qt::MouseFocusReason);
    before.setFocus(Qt::MenuBarFocusReason);
    slider.setFocus(Qt::MenuBarFocusReason);
    EXPECT_FALSE(slider.showsFocus());
}

TEST_F(HorizontalSlider, ADialogInBetweenLeavesTheRingAsItWas) {
    desktop.tap("Tab");
    {
        QDialog dialog(&window);
        desktop.show(dialog);
        EXPECT_FALSE(slider.hasFocus());
    }
    desktop.show(window);
    EXPECT_TRUE(slider.hasFocus());
    EXPECT_TRUE(slider.showsFocus());
}

/// 24 by 320, from -36 to 36: the knob's middle goes from 310 up to 10.
class GainSlider : public ControlsTest, public H8GainSliderParent {
protected:
    GainSlider() {
        slider.setGeometry(20, 20, 24, 320);
        slider.setVertical(true);
        slider.setMinValue(-36);
        slider.setMaxValue(36);
        slider.setStep(1);
        slider.cell()->setIsVertical(true);
        slider.cell()->setSliderEnabled(true);
        slider.setDoubleValue(12);
        slider.setParent(this);
        note(slider, actions);
        desktop.show(window);
    }

    void sliderGainValueChanged(H8GainSlider& sender) override {
        EXPECT_EQ(&sender, &slider);
        told.push_back(sender.doubleValue());
    }

    H8GainSlider slider{&window};
    Actions actions;
    std::vector<double> told;
};

TEST_F(GainSlider, TheMinimumIsAtTheBottom) {
    desktop.click(slider, {12, 310});
    EXPECT_EQ(slider.doubleValue(), -36);
    desktop.click(slider, {12, 10});
    EXPECT_EQ(slider.doubleValue(), 36);
    desktop.click(slider, {12, 85});
    EXPECT_DOUBLE_EQ(slider.doubleValue(), 18);
}

TEST_F(GainSlider, ADoubleClickSetsItsValueAndTellsTheParentOnce) {
    desktop.doubleClick(slider, {12, 110}); // on the knob, at 12
    EXPECT_EQ(slider.doubleValue(), 0);
    EXPECT_THAT(told, ElementsAre(0));
}

TEST_F(GainSlider, OnlyTheFirstClickOfADoubleClickIsAnAction) {
    slider.setValueForDoubleClick(-6);
    desktop.doubleClick(slider, {12, 85});
    EXPECT_THAT(actions, ElementsAre(Pair(ControlEvent::LeftMouseDown, testing::DoubleEq(18)),
                                     Pair(ControlEvent::LeftMouseUp, testing::DoubleEq(18))));
    EXPECT_THAT(told, ElementsAre(-6));
}

TEST_F(GainSlider, AThirdClickSetsItOnceMore) {
    desktop.clicks(slider, {12, 110}, 3);
    EXPECT_THAT(told, ElementsAre(0, 0));
}

TEST_F(GainSlider, TheSecondPressOfADoubleClickDragsNothing) {
    desktop.click(slider, {12, 110});
    {
        const PatientClicks patience;
        desktop.press();
    }
    desktop.moveTo(slider, {12, 250});
    desktop.release();
    EXPECT_EQ(slider.doubleValue(), 0);
}

TEST_F(GainSlider, ASingleClickDragsAndTellsNoParent) {
    desktop.drag(slider, {12, 110}, {12, 235});
    EXPECT_DOUBLE_EQ(slider.doubleValue(), -18);
    EXPECT_THAT(told, IsEmpty());
}

TEST_F(GainSlider, WithoutAParentADoubleClickSetsTheValue) {
    slider.setParent(nullptr);
    desktop.doubleClick(slider, {12, 110});
    EXPECT_EQ(slider.doubleValue(), 0);
}

TEST_F(GainSlider, UpAndRightAreLouder) {
    desktop.tap("Tab");
    desktop.tap("Up");
    desktop.tap("Right");
    desktop.tap("Page_Down");
    EXPECT_EQ(slider.doubleValue(), 4);
}

TEST_F(GainSlider, TheTrackIsWhiteBelowTheKnob) {
    const QImage image = Desktop::painted(slider);
    EXPECT_EQ(colourAt(image, {12, 300}), QColor(Qt::white));
    EXPECT_EQ(colourAt(image, {12, 110}), QColor(Qt::white)) << "knob";
    EXPECT_EQ(colourAt(image, {5, 110}), QColor(Qt::white)) << "knob, 7 points from its middle";
    EXPECT_EQ(colourAt(image, {12, 50}), trackColor());
}

} // namespace

} // namespace deckmate::test
