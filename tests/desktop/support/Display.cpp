#include "desktop/support/Display.h"

#include "desktop/support/XConnection.h"
#include "support/Bytes.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <string>
#include <vector>

namespace deckmate::test {

namespace {

constexpr auto ordinaryScreen = "1600x1000";

/// New windows get the focus; no key or button means anything to the window manager, so that each
/// reaches the application at once.
constexpr auto windowManagerSettings = R"(<?xml version="1.0" encoding="UTF-8"?>
<openbox_config xmlns="http://openbox.org/3.4/rc">
  <focus><focusNew>yes</focusNew><followMouse>no</followMouse></focus>
  <placement><policy>Smart</policy></placement>
  <desktops><number>1</number><popupTime>0</popupTime></desktops>
  <keyboard></keyboard>
  <mouse></mouse>
</openbox_config>
)";

void hideUser(const TemporaryFolder& folder) {
    for (const char* name : {"HOME", "XDG_RUNTIME_DIR", "XDG_CONFIG_HOME", "XDG_CACHE_HOME",
                             "XDG_DATA_HOME", "XDG_STATE_HOME"}) {
        setenv(name, folder.path().c_str(), 1);
    }
    for (const char* name :
         {"WAYLAND_DISPLAY", "XAUTHORITY", "XMODIFIERS", "XDG_CURRENT_DESKTOP", "XDG_SESSION_TYPE",
          "DESKTOP_SESSION", "SESSION_MANAGER", "AT_SPI_BUS_ADDRESS", "QT_STYLE_OVERRIDE",
          "QT_QPA_PLATFORMTHEME", "QT_IM_MODULE", "QT_SCREEN_SCALE_FACTORS", "QT_FONT_DPI",
          "QT_ACCESSIBILITY", "QT_LINUX_ACCESSIBILITY_ALWAYS_ON"}) {
        unsetenv(name);
    }
    // An address where nobody listens: without any, the bus library would start a bus.
    setenv("DBUS_SESSION_BUS_ADDRESS", ("unix:path=" + (folder / "no-bus").string()).c_str(), 1);
    setenv("QT_QPA_PLATFORM", "xcb", 1);
    setenv("LC_ALL", "C.UTF-8", 1);
}

/// The screen's size, as the server takes it.
std::string screenInPixels() {
    const char* const wanted = std::getenv("H8_TEST_SCREEN");
    const char* const scale = std::getenv("QT_SCALE_FACTOR");
    const double factor = scale == nullptr ? 1.0 : std::max(1.0, std::strtod(scale, nullptr));
    char* rest = nullptr;
    const double width = std::strtod(wanted == nullptr ? ordinaryScreen : wanted, &rest);
    const double height = std::strtod(rest + 1, nullptr);
    return std::to_string(std::lround(width * factor)) + "x" +
           std::to_string(std::lround(height * factor)) + "x24";
}

} // namespace

Display::Display() {
    hideUser(folder_);
    startServer();
    startWindowManager();
}

void Display::startServer() {
    const std::filesystem::path number = folder_ / "display";
    server_ = std::make_unique<ChildProcess>(
        std::vector<std::string>{"Xvfb", "-displayfd", "1", "-screen", "0", screenInPixels(),
                                 "-nolisten", "tcp", "-noreset"},
        number);
    Bytes text;
    waitUntil(
        [&] {
            text = contentsOf(number);
            return !text.empty() && static_cast<char>(text.back()) == '\n';
        },
        "starting an X server");
    std::string name = ":";
    for (const auto byte : text) {
        name += static_cast<char>(byte);
    }
    name.pop_back();
    setenv("DISPLAY", name.c_str(), 1);
}

void Display::startWindowManager() {
    Bytes settings;
    for (const char character : std::string(windowManagerSettings)) {
        settings.push_back(static_cast<Bytes::value_type>(character));
    }
    const auto path = folder_.file("rc.xml", settings);
    windowManager_ = std::make_unique<ChildProcess>(
        std::vector<std::string>{"openbox", "--sm-disable", "--config-file", path.string()},
        folder_ / "log");
    const XConnection connection;
    waitUntil([&] { return connection.isManaged(); }, "starting a window manager");
}

} // namespace deckmate::test
