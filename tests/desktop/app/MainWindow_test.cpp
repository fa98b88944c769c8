#include "app/WindowController.h"

#include "desktop/app/LookEnvironment.h"
#include "desktop/app/XWindows.h"
#include "desktop/support/Desktop.h"
#include "platform/qt/QtUserDefaults.h"
#include "services/Utility.h"
#include "support/ChildProcess.h"
#include "support/TemporaryFolder.h"

#include <cmath>
#include <gtest/gtest.h>
#include <optional>

#include <QApplication>
#include <QMainWindow>
#include <QScreen>

namespace deckmate {
namespace {

using test::ChildProcess;
using test::Desktop;
using test::XWindows;

constexpr auto title = "ORLO H8 Deckmate";
constexpr QColor background(0x17, 0x19, 0x1C);

XWindows::Window managed(const XWindows& windows) {
    std::optional<XWindows::Window> found;
    EXPECT_TRUE(Desktop::waitFor([&] {
        found = windows.titled(title);
        return found.has_value();
    }));
    return found.value_or(0);
}

/// Whether a place in pixels is that of a window of this size in the middle of the screen: exactly
/// where its corner is on whole pixels, else as near as the toolkit gets, which rounds the corner
/// and the size for themselves.
bool isInTheMiddle(const QRect& place) {
    const QSizeF screen = QApplication::primaryScreen()->size();
    const double ratio = QApplication::primaryScreen()->devicePixelRatio();
    const double x = (screen.width() - 1050) / 2 * ratio;
    const double y = (screen.height() - 668) / 2 * ratio;
    const double slack = x == std::floor(x) && y == std::floor(y) ? 0 : 1;
    return std::abs(place.x() - x) <= slack && std::abs(place.y() - y) <= slack &&
           std::abs(place.width() - 1050 * ratio) <= slack &&
           std::abs(place.height() - 668 * ratio) <= slack;
}

TEST(MainWindow, ItHasItsSizeInTheMiddleOfTheScreenWhateverTheScreensSize) {
    WindowController controller;
    Desktop::get().show(controller.window());
    const XWindows windows;
    const auto id = managed(windows);
    EXPECT_TRUE(Desktop::waitFor([&] { return isInTheMiddle(windows.place(id)); }))
        << windows.place(id).x() << ' ' << windows.place(id).y() << ' ' << windows.place(id).width()
        << ' ' << windows.place(id).height();
}

TEST(MainWindow, AnotherStartDoesntRememberWhereTheWindowWas) {
    const XWindows windows;
    {
        WindowController controller;
        Desktop::get().show(controller.window());
        controller.window().setGeometry(10, 40, 700, 500);
        Desktop::get().settle();
    }
    WindowController controller;
    Desktop::get().show(controller.window());
    EXPECT_TRUE(Desktop::waitFor([&] { return isInTheMiddle(windows.place(managed(windows))); }));
}

TEST(MainWindow, ItIsOfTheApplicationsColour) {
    WindowController controller;
    Desktop::get().show(controller.window());
    QWidget& content = *controller.window().centralWidget();
    EXPECT_TRUE(Desktop::waitFor([&] {
        return test::colourAt(Desktop::shown(content), {525, 334}) == background;
    }));
}

/// As after the first start, when the introduction has been read.
void silenceIntroduction() {
    const QtUserDefaults defaults;
    Utility::store("UD_DO_NOT_SHOW_AGAIN", DECKMATE_TEST_VERSION);
}

TEST(MainWindow, ClosingItEndsTheProgram) {
    silenceIntroduction();
    const XWindows windows;
    ChildProcess program({DECKMATE_PROGRAM});
    windows.close(managed(windows));
    EXPECT_TRUE(program.hasSucceeded());
}

TEST(MainWindow, TheProgramsWindowIsTheControllers) {
    silenceIntroduction();
    const XWindows windows;
    ChildProcess program({DECKMATE_PROGRAM});
    const auto id = managed(windows);
    EXPECT_TRUE(Desktop::waitFor([&] { return isInTheMiddle(windows.place(id)); }));
    windows.close(id);
    EXPECT_TRUE(program.hasSucceeded());
}

TEST(MainWindow, WithoutADisplayTheProgramSaysSoAndFails) {
    const test::TemporaryFolder folder;
    const auto log = (folder / "log").string();
    ChildProcess program({"sh", "-c", "DISPLAY=:none exec " DECKMATE_PROGRAM " 2>&1"}, log);
    EXPECT_FALSE(program.hasSucceeded());
    const auto bytes = test::contentsOf(log);
    EXPECT_EQ(std::string(bytes.begin(), bytes.end()),
              "orlo-h8-deckmate: no display to open a window on\n");
}

} // namespace
} // namespace deckmate
