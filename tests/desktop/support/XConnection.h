// What a hand does to keyboard and mouse, told to the X server.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

namespace deckmate::test {

/// A connection to the server of $DISPLAY, beside the application's own. What it asks for comes to
/// the application from the server, as if a device had done it, and has left the server when the
/// call returns. Coordinates are pixels of the screen.
class XConnection {
public:
    /// Throws std::runtime_error without a server.
    XConnection();
    ~XConnection();
    XConnection(const XConnection&) = delete;
    XConnection& operator=(const XConnection&) = delete;
    XConnection(XConnection&&) = delete;
    XConnection& operator=(XConnection&&) = delete;

    /// Whether a window manager has announced itself and a window that is shown now gets the
    /// keyboard, which may take some asking: the announcement comes before the manager is ready.
    bool isManaged() const;
    void movePointer(int x, int y) const;
    /// Relative to a window's upper left pixel, wherever the window manager has put it.
    void movePointerIn(std::uint32_t window, int x, int y) const;
    /// 1 left, 2 middle, 3 right, 4 wheel up, 5 wheel down.
    void button(unsigned number, bool isDown) const;
    /// A key by its symbol's name, such as "Tab", "Shift_L" or "a". Throws std::runtime_error if
    /// the keyboard has none.
    void key(const std::string& symbol, bool isDown) const;
    /// The same told to a window alone, as of a time of the server's in milliseconds.
    void tellKey(std::uint32_t window, const std::string& symbol, bool isDown,
                 std::uint32_t time) const;
    /// Whether the symbol stands on the upper half of its key.
    bool needsShift(const std::string& symbol) const;
    /// Sends a message of the type pingType() to the client that made the window.
    void ping(std::uint32_t window, std::uint32_t token) const;
    std::uint32_t pingType() const;

private:
    struct Impl;

    std::unique_ptr<Impl> impl_;
};

} // namespace deckmate::test
