#include "app/AboutVC.h"
#include "app/IntroductionVC.h"
#include "app/NodeviceVC.h"

#include "desktop/app/LookEnvironment.h"
#include "desktop/app/Spoken.h"
#include "desktop/app/XWindows.h"
#include "desktop/support/Desktop.h"
#include "support/MemoryUserDefaults.h"

#include <gmock/gmock.h>
#include <memory>
#include <optional>
#include <string>

#include <QApplication>
#include <QCheckBox>
#include <QLabel>
#include <QPushButton>

namespace deckmate {
namespace {

using test::Desktop;
using test::MemoryUserDefaults;
using test::spokenNames;
using test::XWindows;
using testing::ElementsAre;
using testing::StartsWith;

constexpr auto key = "UD_DO_NOT_SHOW_AGAIN";
const QRectF presenter(200, 160, 1050, 668);

template <class Kind>
Kind& child(const QWidget& dialog, const char* name) {
    auto* const found = dialog.findChild<Kind*>(name);
    EXPECT_NE(found, nullptr) << name;
    return *found;
}

/// What all three have in common.
class Dialog : public testing::TestWithParam<std::string> {
protected:
    Dialog() {
        if (GetParam() == "About") {
            window = std::make_unique<AboutVC>();
        } else if (GetParam() == "Introduction") {
            window = std::make_unique<IntroductionVC>();
        } else {
            window = std::make_unique<NodeviceVC>();
        }
        window->setParentFrame(presenter);
    }

    XWindows::Window managed() {
        std::optional<XWindows::Window> found;
        EXPECT_TRUE(Desktop::waitFor([&] {
            found = windows.titled(GetParam());
            return found.has_value();
        }));
        return found.value_or(0);
    }

    MemoryUserDefaults defaults;
    Desktop& desktop = Desktop::get();
    XWindows windows;
    std::unique_ptr<DialogWindow> window;
};

INSTANTIATE_TEST_SUITE_P(App, Dialog, testing::Values("About", "Introduction", "ORLO H8 Deckmate"),
                         [](const auto& tested) {
                             return tested.param.substr(0, tested.param.find(' '));
                         });

TEST_P(Dialog, ItsTitleBarSaysNothingBesideItsTitle) {
    desktop.show(*window);
    EXPECT_EQ(window->windowTitle().toStdString(), GetParam());
    EXPECT_NE(managed(), 0U);
}

TEST_P(Dialog, ItHasTheMiddleOfTheWindowThatPresentsIt) {
    desktop.show(*window);
    const QRect place = windows.place(managed());
    const double ratio = window->devicePixelRatioF();
    // Half a point may be lost on each side.
    EXPECT_NEAR((place.x() + place.width() / 2.0) / ratio, presenter.center().x(), 0.51);
    EXPECT_NEAR((place.y() + place.height() / 2.0) / ratio, presenter.center().y(), 0.51);
}

TEST_P(Dialog, PresentedAgainItFollowsItsPresenter) {
    desktop.show(*window);
    const QPoint before = window->geometry().center();
    window->hide();
    window->setParentFrame(presenter.translated(40, -20));
    window->show();
    EXPECT_TRUE(Desktop::waitFor([&] {
        return windows.titled(GetParam()).has_value() &&
               window->geometry().center() == before + QPoint(40, -20);
    }));
}

TEST_P(Dialog, ItCanBeClosedButNeitherMaximisedNorResized) {
    desktop.show(*window);
    const auto id = managed();
    ASSERT_TRUE(Desktop::waitFor([&] { return windows.allows(id, "_NET_WM_ACTION_CLOSE"); }));
    EXPECT_FALSE(windows.allows(id, "_NET_WM_ACTION_MAXIMIZE_HORZ"));
    EXPECT_FALSE(windows.allows(id, "_NET_WM_ACTION_MAXIMIZE_VERT"));
    EXPECT_FALSE(windows.allows(id, "_NET_WM_ACTION_RESIZE"));
}

TEST_P(Dialog, ItIsModalAndOfTheApplicationsColour) {
    desktop.show(*window);
    EXPECT_TRUE(window->isModal());
    EXPECT_TRUE(Desktop::waitFor([&] {
        return test::colourAt(Desktop::shown(*window), {4, 4}) == QColor(0x17, 0x19, 0x1C);
    }));
}

TEST_P(Dialog, EscapeClosesIt) {
    desktop.show(*window);
    desktop.tap("Escape");
    EXPECT_FALSE(window->isVisible());
}

TEST_P(Dialog, ReturnClosesIt) {
    desktop.show(*window);
    desktop.tap("Return");
    EXPECT_FALSE(window->isVisible());
}

TEST_P(Dialog, ItsButtonClosesIt) {
    desktop.show(*window);
    const auto buttons = window->findChildren<QPushButton*>();
    ASSERT_EQ(buttons.size(), 1);
    desktop.click(*buttons[0], QRectF(buttons[0]->rect()).center());
    EXPECT_FALSE(window->isVisible());
}

TEST_P(Dialog, ItsTitleBarClosesIt) {
    desktop.show(*window);
    windows.close(managed());
    EXPECT_TRUE(Desktop::waitFor([&] { return !window->isVisible(); }));
}

TEST_P(Dialog, NoTextIsCutOff) {
    desktop.show(*window);
    for (const QLabel* const label : window->findChildren<QLabel*>()) {
        const int needed =
            label->wordWrap() ? label->heightForWidth(label->width()) : label->sizeHint().height();
        EXPECT_GE(label->height(), needed) << label->text().toStdString();
        EXPECT_TRUE(label->wordWrap() || label->width() >= label->sizeHint().width())
            << label->text().toStdString();
    }
}

TEST_P(Dialog, ItStandsOnAGridOfEightPoints) {
    desktop.show(*window);
    EXPECT_EQ(window->width() % 8, 0) << window->width();
    EXPECT_EQ(window->height() % 8, 0) << window->height();
    for (const QPushButton* const button : window->findChildren<QPushButton*>()) {
        EXPECT_EQ(button->height(), 32);
        EXPECT_EQ(window->width() - button->geometry().right() - 1, 24);
        EXPECT_EQ(window->height() - button->geometry().bottom() - 1, 16);
    }
}

TEST_P(Dialog, NoLetterStandsForAMnemonic) {
    for (const QAbstractButton* const button : window->findChildren<QAbstractButton*>()) {
        EXPECT_FALSE(button->text().contains('&'));
        EXPECT_FALSE(button->text().isEmpty());
    }
}

// ---- About

TEST(AboutVC, ItShowsTheVersionItIsGiven) {
    AboutVC about;
    about.setVersionString("1.0.12");
    Desktop::get().show(about);
    EXPECT_EQ(child<QLabel>(about, "version").text(), "1.0.12");
}

TEST(AboutVC, AVersionIsNoMarkup) {
    AboutVC about;
    about.setVersionString("<b>1</b>");
    Desktop::get().show(about);
    EXPECT_EQ(child<QLabel>(about, "version").textFormat(), Qt::PlainText);
}

TEST(AboutVC, TheMakersLogoHasAName) {
    const AboutVC about;
    EXPECT_EQ(child<QLabel>(about, "imgORLO").accessibleName(), "ORLO");
}

TEST(AboutVC, ItIsReadFromTheTop) {
    AboutVC about;
    about.setVersionString("1.0.12");
    Desktop::get().show(about);
    EXPECT_THAT(spokenNames(about),
                ElementsAre("ORLO", "ORLO H8 Deckmate", "Version", "1.0.12", StartsWith("Plays"),
                            StartsWith("Built"), StartsWith("Free"), "Close"));
}

// ---- No recorder

TEST(NodeviceVC, ItIsReadFromTheTop) {
    NodeviceVC notice;
    Desktop::get().show(notice);
    EXPECT_THAT(spokenNames(notice),
                ElementsAre("ORLO H8", "No recorder connected", StartsWith("The recorder's"),
                            "\u2022", StartsWith("The cable"), "\u2022",
                            StartsWith("The recorder is"), "\u2022", StartsWith("No other"),
                            StartsWith("It is found"), "OK"));
}

// ---- Introduction

class Introduction : public testing::Test {
protected:
    Introduction() { window.setVersionString("1.0.12"); }

    QCheckBox& box() { return child<QCheckBox>(window, "toggleShow"); }
    void clickBox() { desktop.click(box(), {8, box().height() / 2.0}); }
    void clickOK() { desktop.click(child<QPushButton>(window, "btnOK"), {20, 18}); }

    MemoryUserDefaults defaults;
    Desktop& desktop = Desktop::get();
    IntroductionVC window;
};

TEST_F(Introduction, ATickedBoxStoresTheVersion) {
    desktop.show(window);
    clickBox();
    clickOK();
    EXPECT_FALSE(window.isVisible());
    EXPECT_EQ(defaults.stringForKey(key), "1.0.12");
}

TEST_F(Introduction, AnEmptyBoxStoresNothing) {
    desktop.show(window);
    clickOK();
    EXPECT_EQ(defaults.stringForKey(key), std::nullopt);
}

TEST_F(Introduction, AnEmptyBoxLeavesAnEarlierVersionAlone) {
    defaults.setString("0.9.1", key);
    desktop.show(window);
    clickOK();
    EXPECT_EQ(defaults.stringForKey(key), "0.9.1");
}

TEST_F(Introduction, ATickTakenBackStoresNothing) {
    desktop.show(window);
    clickBox();
    clickBox();
    clickOK();
    EXPECT_EQ(defaults.stringForKey(key), std::nullopt);
}

TEST_F(Introduction, ReturnStoresATickAsTheButtonDoes) {
    desktop.show(window);
    clickBox();
    desktop.tap("Return");
    EXPECT_FALSE(window.isVisible());
    EXPECT_EQ(defaults.stringForKey(key), "1.0.12");
}

TEST_F(Introduction, EscapeStoresNothing) {
    desktop.show(window);
    clickBox();
    desktop.tap("Escape");
    EXPECT_FALSE(window.isVisible());
    EXPECT_EQ(defaults.stringForKey(key), std::nullopt);
}

TEST_F(Introduction, FromTheMenuThereIsNoBox) {
    window.setFromMenu(true);
    desktop.show(window);
    EXPECT_FALSE(box().isVisible());
}

TEST_F(Introduction, FromTheMenuNothingIsStoredWhateverTheBoxHolds) {
    window.setFromMenu(true);
    box().setChecked(true);
    desktop.show(window);
    clickOK();
    EXPECT_FALSE(window.isVisible());
    EXPECT_EQ(defaults.stringForKey(key), std::nullopt);
}

TEST_F(Introduction, TheKeyboardReachesTheBoxAndTheButton) {
    desktop.show(window);
    const auto& button = child<QPushButton>(window, "btnOK");
    EXPECT_EQ(QApplication::focusWidget(), &button);
    desktop.tap("Tab");
    EXPECT_EQ(QApplication::focusWidget(), &box());
    desktop.tap("space");
    EXPECT_TRUE(box().isChecked());
    desktop.tap("Tab");
    EXPECT_EQ(QApplication::focusWidget(), &button);
}

TEST_F(Introduction, ItIsReadFromTheTop) {
    desktop.show(window);
    EXPECT_THAT(spokenNames(window),
                ElementsAre(StartsWith("From a recording"), "", StartsWith("1"),
                            StartsWith("Choose"), "", StartsWith("2"), StartsWith("Double"), "",
                            StartsWith("3"), StartsWith("Drag"), "", StartsWith("4"),
                            StartsWith("Save"), "Don't show this again", "OK"));
}

TEST_F(Introduction, TheBoxSaysWhatItDoes) {
    EXPECT_EQ(box().text(), "Don't show this again");
}

} // namespace
} // namespace deckmate
