#include "controls/GainTickTitle.h"

#include "controls/ViewDrawing.h"
#include "desktop/controls/ControlsTest.h"

#include <gmock/gmock.h>

namespace deckmate::test {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class TickStrip : public ControlsTest, public GainTickDelegate {
protected:
    TickStrip() {
        strip.setGeometry(20, 20, 50, 360);
        strip.setTexts({"+36", "+24", "+12", "0", "-12", "-24", "-36"});
        strip.initTick();
        strip.setEnable(true);
        strip.setDelegate(this);
        desktop.show(window);
        // The labels' places are known when they have been drawn.
        EXPECT_TRUE(Desktop::waitFor([&] { return strip.textRectList().front().frame.width > 0; }));
    }

    void GainTickTitle(class GainTickTitle& sender, const QString& clickAt) override {
        EXPECT_EQ(&sender, &strip);
        clicked.push_back(clickAt.toStdString());
    }
    QRectF label(std::size_t index) const {
        return fromView(strip.textRectList()[index].frame, strip.height());
    }
    class GainTickTitle strip {
        &window
    };
    std::vector<std::string> clicked;
};

TEST_F(TickStrip, LabelsAreFiftyApartAndRightAligned) {
    for (std::size_t i = 0; i < 7; ++i) {
        EXPECT_NEAR(label(i).center().y(), 30.0 + 50.0 * static_cast<double>(i), 1e-9) << i;
        EXPECT_EQ(label(i).right(), 50) << i;
    }
}

TEST_F(TickStrip, AClickOnALabelReportsItsText) {
    desktop.click(strip, label(0).center());
    desktop.click(strip, label(3).center());
    EXPECT_THAT(clicked, ElementsAre("+36", "0"));
}

TEST_F(TickStrip, AClickFiveBelowALabelSelectsItAndFiveAboveDoesNot) {
    desktop.click(strip, {label(2).center().x(), label(2).bottom() + 5});
    EXPECT_THAT(clicked, ElementsAre("+12"));
    desktop.click(strip, {label(2).center().x(), label(2).top() - 5});
    EXPECT_THAT(clicked, ElementsAre("+12"));
}

TEST_F(TickStrip, AClickLeftOfALabelSelectsIt) {
    desktop.click(strip, {1, label(3).center().y()});
    EXPECT_THAT(clicked, ElementsAre("0"));
}

TEST_F(TickStrip, AClickBetweenLabelsSelectsNone) {
    desktop.click(strip, {40, (label(2).bottom() + label(3).top()) / 2 + 8});
    EXPECT_THAT(clicked, IsEmpty());
}

TEST_F(TickStrip, ADoubleClickReportsTwice) {
    desktop.doubleClick(strip, label(3).center());
    EXPECT_THAT(clicked, ElementsAre("0", "0"));
}

TEST_F(TickStrip, DisabledItIsDimButReports) {
    EXPECT_GT(brightest(Desktop::painted(strip)), 230);
    strip.setEnable(false);
    EXPECT_LT(brightest(Desktop::painted(strip)), 150);
    desktop.click(strip, label(0).center());
    EXPECT_THAT(clicked, ElementsAre("+36"));
}

TEST_F(TickStrip, DisabledLabelsAreHalfWhite) {
    strip.setFont(thickFont());
    strip.setEnable(false);
    // Half of 255 over half of the background's 0x21.
    EXPECT_NEAR(brightest(Desktop::painted(strip)), 144, 1);
}

TEST_F(TickStrip, TheScreenShowsThatItIsDisabled) {
    ASSERT_TRUE(Desktop::waitFor([&] { return brightest(Desktop::shown(strip)) > 230; }));
    strip.setEnable(false);
    EXPECT_TRUE(Desktop::waitFor([&] { return brightest(Desktop::shown(strip)) < 150; }));
}

TEST_F(TickStrip, TheScreenShowsNewTexts) {
    ASSERT_TRUE(Desktop::waitFor([&] { return brightest(Desktop::shown(strip)) > 230; }));
    strip.setTexts({});
    strip.initTick();
    EXPECT_TRUE(Desktop::waitFor([&] { return brightest(Desktop::shown(strip)) < 0x30; }));
}

TEST_F(TickStrip, WithoutADelegateAClickIsNothing) {
    strip.setDelegate(nullptr);
    desktop.click(strip, label(0).center());
    EXPECT_THAT(clicked, IsEmpty());
    strip.setDelegate(this);
    desktop.click(strip, label(0).center());
    EXPECT_THAT(clicked, ElementsAre("+36"));
}

TEST_F(TickStrip, NewTextsHaveNoPlaceUntilTheyAreDrawn) {
    strip.setTexts({"only"});
    EXPECT_EQ(strip.textRectList().size(), 7U);
    strip.initTick();
    ASSERT_EQ(strip.textRectList().size(), 1U);
    EXPECT_EQ(strip.textRectList().front().frame, ViewRect());
    Desktop::painted(strip);
    EXPECT_NEAR(label(0).center().y(), 30, 1e-9);
}

TEST_F(TickStrip, WithoutTextsThereIsNothingToClick) {
    strip.setTexts({});
    strip.initTick();
    Desktop::painted(strip);
    desktop.click(strip, {25, 30});
    EXPECT_THAT(clicked, IsEmpty());
}

} // namespace

} // namespace deckmate::test
