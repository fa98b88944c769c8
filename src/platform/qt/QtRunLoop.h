// The main thread's event loop by Qt.
#pragma once

#include "platform/RunLoop.h"

#include <chrono>
#include <functional>
#include <memory>

namespace deckmate {

/// Runs inside Qt's event loop, also inside the nested one of a dialog. Timers keep to their grid
/// and are never early; they are late by up to a millisecond. An interval below a millisecond
/// counts as one.
///
/// Made on the main thread. Makes the Qt application if there is none; one that exists has to
/// outlive it. Throws std::system_error, here and when a signal is made, when the system has no
/// descriptors left.
class QtRunLoop final : public RunLoop {
public:
    QtRunLoop();
    /// Drops what has yet to run on the main thread; who waits for that goes on without it. Then
    /// waits for the work in the background, all of which is done. Timers, signals and
    /// watches go before.
    ~QtRunLoop() override;
    QtRunLoop(const QtRunLoop&) = delete;
    QtRunLoop& operator=(const QtRunLoop&) = delete;
    QtRunLoop(QtRunLoop&&) = delete;
    QtRunLoop& operator=(QtRunLoop&&) = delete;

    bool isMainThread() const override;
    void runLater(std::function<void()> action) override;
    void runAndWait(std::function<void()> action) override;
    void runInBackground(std::function<void()> action) override;
    std::unique_ptr<Timer> makeTimer() override;
    std::unique_ptr<Signal> makeSignal(std::function<void()> action) override;
    std::unique_ptr<DescriptorWatch> watchReadable(int descriptor,
                                                   std::function<void()> action) override;

    /// Handles events until quit(), and sleeps in between. Thread: main.
    void run();
    /// Ends run(), which is under way. Thread: main.
    void quit();
    /// Handles events until `isDone` holds, which is asked after each of them and some hundred
    /// times a second; NO if it doesn't hold when `limit` is over. For tests and tools. Thread:
    /// main.
    bool runUntil(const std::function<bool()>& isDone, std::chrono::milliseconds limit);

private:
    struct Impl;

    std::unique_ptr<Impl> impl_;
};

} // namespace deckmate
