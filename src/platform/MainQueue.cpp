#include "platform/MainQueue.h"

#include <algorithm>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <utility>

namespace deckmate {

namespace {

struct Task {
    MainQueue::Action action;
    std::shared_ptr<bool> hasRun; ///< null if nobody waits for it
};

} // namespace

struct MainQueue::State {
    std::mutex lock;
    std::condition_variable someoneMayGo;
    std::function<void()> wake;
    std::deque<Task> tasks;
    bool takesMore = true;
    bool letsGo = false;

    /// Leaves the task as it is if it isn't taken.
    bool add(Task& task) {
        if (!takesMore) {
            return false;
        }
        tasks.push_back(std::move(task));
        wake();
        return true;
    }
};

MainQueue::MainQueue(std::function<void()> wake) : state_(std::make_shared<State>()) {
    state_->wake = std::move(wake);
}

MainQueue::~MainQueue() {
    close();
}

void MainQueue::add(Action action) {
    Task task{std::move(action), nullptr};
    const std::lock_guard guard(state_->lock);
    state_->add(task);
}

void MainQueue::addAndWait(Action action) {
    const std::shared_ptr<State> state = state_;
    const auto hasRun = std::make_shared<bool>(false);
    Task task{std::move(action), hasRun};
    std::unique_lock guard(state->lock);
    if (state->add(task)) {
        state->someoneMayGo.wait(guard, [&] { return *hasRun || state->letsGo; });
    }
}

bool MainQueue::isAwaited() const {
    const std::lock_guard guard(state_->lock);
    return std::any_of(state_->tasks.begin(), state_->tasks.end(),
                       [](const Task& task) { return task.hasRun != nullptr; });
}

bool MainQueue::runOne() {
    const std::shared_ptr<State> state = state_;
    Task task;
    {
        const std::lock_guard guard(state->lock);
        if (state->tasks.empty()) {
            return false;
        }
        task = std::move(state->tasks.front());
        state->tasks.pop_front();
    }
    task.action();
    // What the action refers to may be gone once its waiter goes on.
    task.action = nullptr;
    if (task.hasRun != nullptr) {
        const std::lock_guard guard(state->lock);
        *task.hasRun = true;
        state->someoneMayGo.notify_all();
    }
    return true;
}

void MainQueue::close() {
    std::deque<Task> dropped;
    {
        const std::lock_guard guard(state_->lock);
        state_->takesMore = false;
        dropped.swap(state_->tasks);
    }
    // Without the lock: what the actions hold may come back here when it goes.
    dropped.clear();
    const std::lock_guard guard(state_->lock);
    state_->letsGo = true;
    state_->someoneMayGo.notify_all();
}

} // namespace deckmate
