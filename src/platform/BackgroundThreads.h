// Threads for work that the main thread must not wait for.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace deckmate {

/// Runs pieces of work at the same time on threads of its own, made as they are needed. With all of
/// them busy, or no more to be had, work waits for its turn.
class BackgroundThreads {
public:
    using Work = std::function<void()>;

    /// The most threads that work at the same time.
    static constexpr std::size_t mostThreads = 16;

    BackgroundThreads() = default;
    /// As finish().
    ~BackgroundThreads();
    BackgroundThreads(const BackgroundThreads&) = delete;
    BackgroundThreads& operator=(const BackgroundThreads&) = delete;
    BackgroundThreads(BackgroundThreads&&) = delete;
    BackgroundThreads& operator=(BackgroundThreads&&) = delete;

    /// Must not throw. Thread: any.
    void run(Work work);
    /// Returns when all work is done, the waiting one and what it gives in turn included. Thread:
    /// the one that made this, which then does what is given later itself, at the end.
    void finish();

private:
    void takeWork();

    std::mutex lock_;
    std::condition_variable somethingToDo_;
    std::deque<Work> waiting_;
    std::size_t idle_ = 0;
    bool isEnding_ = false;
    std::vector<std::thread> threads_;
};

} // namespace deckmate
