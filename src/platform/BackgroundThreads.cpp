#include "platform/BackgroundThreads.h"

#include <system_error>
#include <utility>

namespace deckmate {

BackgroundThreads::~BackgroundThreads() {
    finish();
}

void BackgroundThreads::finish() {
    std::vector<std::thread> threads;
    {
        const std::lock_guard guard(lock_);
        isEnding_ = true;
        threads.swap(threads_);
    }
    somethingToDo_.notify_all();
    for (std::thread& thread : threads) {
        thread.join();
    }
    // Left over only if not a single thread was to be had, or if work gave more work at the very
    // end.
    takeWork();
}

void BackgroundThreads::run(Work work) {
    const std::lock_guard guard(lock_);
    waiting_.push_back(std::move(work));
    if (waiting_.size() > idle_ && threads_.size() < mostThreads && !isEnding_) {
        try {
            threads_.emplace_back([this] { takeWork(); });
        } catch (const std::system_error&) {
            // Then those that run take it, or one that is made for later work.
        }
    }
    somethingToDo_.notify_one();
}

void BackgroundThreads::takeWork() {
    std::unique_lock guard(lock_);
    while (true) {
        ++idle_;
        somethingToDo_.wait(guard, [this] { return !waiting_.empty() || isEnding_; });
        --idle_;
        if (waiting_.empty()) {
            return;
        }
        Work work = std::move(waiting_.front());
        waiting_.pop_front();
        guard.unlock();
        work();
        work = nullptr;
        guard.lock();
    }
}

} // namespace deckmate
