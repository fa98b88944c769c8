// Windows of all programs, as the X server and the window manager know them.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include <QPoint>
#include <QRect>

namespace deckmate::test {

/// A connection to the server of $DISPLAY beside the application's own. Places are pixels of the
/// screen.
class XWindows {
public:
    using Window = std::uint32_t;

    /// Throws std::runtime_error without a server.
    XWindows();
    ~XWindows();
    XWindows(const XWindows&) = delete;
    XWindows& operator=(const XWindows&) = delete;
    XWindows(XWindows&&) = delete;
    XWindows& operator=(XWindows&&) = delete;

    /// A window that the window manager manages; nothing if none has this title.
    std::optional<Window> titled(const std::string& title) const;
    /// Without the window manager's decoration.
    QRect place(Window window) const;
    /// Whether the window manager would do this ("_NET_WM_ACTION_RESIZE", ...) for the user.
    bool allows(Window window, const std::string& action) const;
    /// Red, green and blue of a pixel of the window; nothing counts that the application has yet to
    /// send.
    std::uint32_t pixel(Window window, const QPoint& place) const;
    /// The outermost window that the window manager has put around it.
    Window frame(Window window) const;
    /// Whether such a window still exists and is on the screen.
    bool isFrameShown(Window frame) const;
    /// What the title bar's close button asks for.
    void close(Window window) const;

private:
    struct Impl;

    std::unique_ptr<Impl> impl_;
};

} // namespace deckmate::test
