// Runs tasks one after the other on a thread of its own, for calls that may take their time.
#pragma once

#include <chrono>
#include <functional>
#include <memory>

namespace deckmate {

/// Thread: any, but for construction and destruction.
class TaskThread {
public:
    TaskThread();
    /// Waits for the tasks given so far, but no longer than `patience`: a task that hangs then is
    /// left behind with its thread, and those after it are never run.
    ~TaskThread();
    TaskThread(const TaskThread&) = delete;
    TaskThread& operator=(const TaskThread&) = delete;
    TaskThread(TaskThread&&) = delete;
    TaskThread& operator=(TaskThread&&) = delete;

    static constexpr std::chrono::milliseconds patience{500};

    /// Tasks run in the order given. They must not throw.
    void run(std::function<void()> task);

private:
    struct Shared;

    std::shared_ptr<Shared> shared_;
};

} // namespace deckmate
