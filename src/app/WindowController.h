// The main window: its size, its place and its background.
#pragma once

#include <memory>

class QMainWindow;

namespace deckmate {

class ModalClose;

/// Owns the window. It comes up with the same size in the middle of the screen at every start.
/// Thread: main.
class WindowController {
public:
    WindowController();
    ~WindowController();
    WindowController(const WindowController&) = delete;
    WindowController& operator=(const WindowController&) = delete;
    WindowController(WindowController&&) = delete;
    WindowController& operator=(WindowController&&) = delete;

    /// Its central widget holds the content.
    QMainWindow& window() { return *window_; }
    void showWindow();

private:
    void windowDidLoad();

    std::unique_ptr<QMainWindow> window_;
    std::unique_ptr<ModalClose> modalClose_;
};

} // namespace deckmate
