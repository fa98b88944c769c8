#include "platform/TaskThread.h"

#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>
#include <utility>

namespace deckmate {

/// Outlives the TaskThread where its thread does.
struct TaskThread::Shared {
    std::mutex lock;
    std::condition_variable news;
    std::deque<std::function<void()>> tasks;
    bool isEnding = false;
    bool isAbandoned = false;
    bool hasEnded = false;

    void work() {
        std::unique_lock guard(lock);
        for (;;) {
            news.wait(guard, [this] { return isEnding || !tasks.empty(); });
            if (tasks.empty()) {
                break;
            }
            std::function<void()> task = std::move(tasks.front());
            tasks.pop_front();
            guard.unlock();
            task();
            task = nullptr; // what it holds may give tasks when it goes
            guard.lock();
            while (isAbandoned) {
                news.wait(guard); // nothing that tasks work on is there any more
            }
        }
        hasEnded = true;
        news.notify_all();
    }
};

TaskThread::TaskThread() : shared_(std::make_shared<Shared>()) {
    std::thread([shared = shared_] { shared->work(); }).detach();
}

TaskThread::~TaskThread() {
    std::unique_lock guard(shared_->lock);
    shared_->isEnding = true;
    shared_->news.notify_all();
    if (!shared_->news.wait_for(guard, patience, [this] { return shared_->hasEnded; })) {
        shared_->isAbandoned = true;
    }
}

void TaskThread::run(std::function<void()> task) {
    const std::lock_guard guard(shared_->lock);
    shared_->tasks.push_back(std::move(task));
    shared_->news.notify_all();
}

} // namespace deckmate
