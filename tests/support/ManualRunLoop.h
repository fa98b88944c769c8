// An event loop that a test turns by hand.
#pragma once

#include "platform/MainQueue.h"
#include "platform/RunLoop.h"
#include "platform/TimerGrid.h"

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

namespace deckmate::test {

/// Nothing happens by itself, and time stands still until the test moves it.
///
///     ManualRunLoop loop;
///     device.connect();
///     loop.advance(std::chrono::seconds(2));
///     EXPECT_TRUE(device.hasTimedOut());
///
/// Misuse ends the program with a line that names it: timers, signals and watches made, started or
/// destroyed on another thread than the main one, an interval that isn't positive, timers, signals
/// and watches that outlive the loop, two watches of one descriptor, queued work that never ends
/// (as does an action that doesn't read what made its descriptor readable).
class ManualRunLoop final : public RunLoop {
public:
    ManualRunLoop();
    /// Drops what is queued; work in the background that has not begun is done.
    ~ManualRunLoop() override;
    ManualRunLoop(const ManualRunLoop&) = delete;
    ManualRunLoop& operator=(const ManualRunLoop&) = delete;
    ManualRunLoop(ManualRunLoop&&) = delete;
    ManualRunLoop& operator=(ManualRunLoop&&) = delete;

    bool isMainThread() const override;
    void runLater(std::function<void()> action) override;
    void runAndWait(std::function<void()> action) override;
    void runInBackground(std::function<void()> action) override;
    std::unique_ptr<Timer> makeTimer() override;
    std::unique_ptr<Signal> makeSignal(std::function<void()> action) override;
    std::unique_ptr<DescriptorWatch> watchReadable(int descriptor,
                                                   std::function<void()> action) override;

    /// Runs what was queued by runLater, runAndWait and raise, and what these queue in turn:
    /// signals first, in the order in which they were made; actions of readable descriptors when
    /// nothing else is left. Thread: main.
    void runPending();
    /// Moves the time on, firing each timer at its time: earliest first, then the one started
    /// first. What is queued is run before, in between and afterwards. Thread: main.
    void advance(Timer::Duration duration);
    /// Moves the time on while the main thread is busy: due timers fire late, with the next
    /// advance. Thread: main.
    void beBusyFor(Timer::Duration duration);
    /// Does what was given to runInBackground, one piece after the other on another thread, and
    /// runs on the main thread what these wait for. Thread: main.
    void runBackgroundWork();
    /// Returns when another thread has queued something, or after a while. For tests with threads
    /// of their own. Thread: main.
    void waitForPending();

    /// Time since the loop was made. Thread: main.
    Timer::Duration now() const { return now_.time_since_epoch(); }
    /// Until the next timer is due; nothing if none is active. Thread: main.
    std::optional<Timer::Duration> untilNextTimer() const;
    /// How many timers are active. Thread: main.
    std::size_t activeTimers() const;

private:
    class ManualTimer;
    class ManualSignal;
    class ManualWatch;

    void expectMainThread(const char* what) const;
    ManualTimer* nextTimer() const;
    bool runOnePending();
    bool callOneWatch();

    std::thread::id mainThread_ = std::this_thread::get_id();
    TimerClock::time_point now_;
    std::uint64_t starts_ = 0;
    std::vector<ManualTimer*> timers_;   ///< all that exist
    std::vector<ManualSignal*> signals_; ///< all that exist, in their order
    std::vector<ManualWatch*> watches_;  ///< all that exist; the one that was called last is last

    std::mutex lock_;
    std::condition_variable somethingNew_;
    std::uint64_t queued_ = 0; ///< by runLater and runAndWait, ever
    std::uint64_t seen_ = 0;   ///< of these, at the last runPending
    std::deque<std::function<void()>> backgroundWork_;
    MainQueue queue_;
};

} // namespace deckmate::test
