// Actions on their way from all threads to the main thread.
#pragma once

#include <functional>
#include <memory>

namespace deckmate {

/// Hands actions to the main thread in the order in which they were added, one at a time, so that
/// one that runs an event loop of its own (a dialog) doesn't hold up those behind it. Each action
/// is destroyed as soon as it has run.
class MainQueue {
public:
    using Action = std::function<void()>;

    /// `wake` is to make the main thread call runOne() soon: once for each action it has to run. It
    /// is called on any thread, must not throw and must not use this queue.
    explicit MainQueue(std::function<void()> wake);
    /// As close().
    ~MainQueue();
    MainQueue(const MainQueue&) = delete;
    MainQueue& operator=(const MainQueue&) = delete;
    MainQueue(MainQueue&&) = delete;
    MainQueue& operator=(MainQueue&&) = delete;

    /// Thread: any.
    void add(Action action);
    /// Returns when the action has run, or without it when the queue is closed. Thread: any but
    /// main.
    void addAndWait(Action action);
    /// Whether somebody waits for an action that has not begun. Thread: any.
    bool isAwaited() const;
    /// Runs the oldest action; NO if there is none. Thread: main.
    bool runOne();
    /// Drops the actions that have not begun, lets go whoever waits for them, and takes no more;
    /// `wake` isn't called any more. Thread: main.
    void close();

private:
    struct State;

    std::shared_ptr<State> state_; ///< shared with those who wait, who may still when this has gone
};

} // namespace deckmate
