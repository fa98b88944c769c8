// The main thread's event loop, and ways to bring work to it and away from it.
#pragma once

#include <chrono>
#include <functional>
#include <memory>

namespace deckmate {

/// Calls an action on the main thread after a while, once or again and again, by the monotonic
/// clock. An action may start, stop or destroy its own timer. Thread: main.
class Timer {
public:
    using Duration = std::chrono::nanoseconds;

    Timer() = default;
    /// No call comes any more.
    virtual ~Timer() = default;
    Timer(const Timer&) = delete;
    Timer& operator=(const Timer&) = delete;
    Timer(Timer&&) = delete;
    Timer& operator=(Timer&&) = delete;

    /// Replaces what was started before.
    virtual void startOnce(Duration after, std::function<void()> action) = 0;
    /// Replaces what was started before. The first call comes after one interval; calls that the
    /// main thread was too busy for are left out, not made up for.
    virtual void startRepeating(Duration interval, std::function<void()> action) = 0;
    /// No call comes any more until the timer is started anew.
    virtual void stop() = 0;
    /// Whether a call will come. A one-shot timer is no longer active inside its own call.
    virtual bool isActive() const = 0;
};

/// Brings news from a thread that must not wait to the main thread.
class Signal {
public:
    Signal() = default;
    /// Thread: main. No call comes any more. Nobody may raise it at the same time or afterwards.
    virtual ~Signal() = default;
    Signal(const Signal&) = delete;
    Signal& operator=(const Signal&) = delete;
    Signal(Signal&&) = delete;
    Signal& operator=(Signal&&) = delete;

    /// Has the signal's action called soon; several raises may make one call, which sees all that
    /// was written before any of them. Thread: any. Realtime: yes (never waits, locks or
    /// allocates).
    virtual void raise() noexcept = 0;
};

/// Has an action called on the main thread, again and again, for as long as a descriptor has
/// something to read, was hung up or has failed. Thread: main.
class DescriptorWatch {
public:
    DescriptorWatch() = default;
    /// No call comes any more.
    virtual ~DescriptorWatch() = default;
    DescriptorWatch(const DescriptorWatch&) = delete;
    DescriptorWatch& operator=(const DescriptorWatch&) = delete;
    DescriptorWatch(DescriptorWatch&&) = delete;
    DescriptorWatch& operator=(DescriptorWatch&&) = delete;
};

/// The event loop of the main thread: the one on which it was made. No action may throw.
///
///     RunLoop& loop = RunLoop::main();
///     loop.runInBackground([&loop] {
///         auto found = search();
///         loop.runLater([found] { show(found); });
///     });
///
/// Exactly one exists while anything of this program runs; whoever made it outlives its users.
class RunLoop {
public:
    /// Makes this the loop that main() gives.
    RunLoop();
    virtual ~RunLoop();
    RunLoop(const RunLoop&) = delete;
    RunLoop& operator=(const RunLoop&) = delete;
    RunLoop(RunLoop&&) = delete;
    RunLoop& operator=(RunLoop&&) = delete;

    /// The one that exists. Thread: any.
    static RunLoop& main();

    /// Thread: any.
    virtual bool isMainThread() const = 0;
    /// Has the action called on the main thread, after those given before and never inside this
    /// call. Thread: any.
    virtual void runLater(std::function<void()> action) = 0;
    /// Calls the action on the main thread and returns when it has run: at once if this is the main
    /// thread. Must not be used by a thread that the main thread waits for. Thread: any.
    virtual void runAndWait(std::function<void()> action) = 0;
    /// Calls the action on some other thread, at the same time as others. Thread: any.
    virtual void runInBackground(std::function<void()> action) = 0;
    /// Thread: main.
    virtual std::unique_ptr<Timer> makeTimer() = 0;
    /// `action` is called on the main thread after each raise. Thread: main.
    virtual std::unique_ptr<Signal> makeSignal(std::function<void()> action) = 0;
    /// `action` may destroy its own watch. The descriptor stays the caller's, open for as long as
    /// the watch exists, and has no other one. Thread: main.
    virtual std::unique_ptr<DescriptorWatch> watchReadable(int descriptor,
                                                           std::function<void()> action) = 0;
};

} // namespace deckmate
