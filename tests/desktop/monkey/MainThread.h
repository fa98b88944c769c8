// The way from the monkey's thread to the application's.
#pragma once

#include "desktop/support/PingFilter.h"
#include "desktop/support/XConnection.h"

#include <chrono>
#include <functional>
#include <stdexcept>

#include <QObject>
#include <QWindow>

namespace deckmate::test {

/// The application didn't get around to something.
class Hang final : public std::runtime_error {
public:
    Hang() : std::runtime_error("the main thread doesn't answer") {}
};

/// Works inside the event loop of a dialog as well. Made and destroyed on the main thread, after
/// the application; everything else is another thread's to call.
class MainThread {
public:
    /// How long the application may be busy with what a user did, on a machine that is busy too.
    static constexpr std::chrono::seconds limit{20};

    MainThread();
    ~MainThread();
    MainThread(const MainThread&) = delete;
    MainThread& operator=(const MainThread&) = delete;
    MainThread(MainThread&&) = delete;
    MainThread& operator=(MainThread&&) = delete;

    /// Has the action called, and returns when it has run. It must not show a dialog. Throws Hang.
    void call(const std::function<void()>& action) const;
    /// As call(), behind timers that are due.
    void callLate(const std::function<void()>& action) const;
    /// Has the action called soon; it may show a dialog.
    void post(const std::function<void()>& action) const;
    /// Returns when the application has dealt with all that the server has sent it. Throws Hang.
    void settle(const XConnection& connection);

private:
    mutable QObject context_;
    PingFilter filter_;
    QWindow pinged_; ///< never shown
    std::uint32_t pings_ = 0;
};

} // namespace deckmate::test
