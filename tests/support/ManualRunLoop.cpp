#include "support/ManualRunLoop.h"

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <tuple>
#include <utility>

#include <poll.h>

namespace deckmate::test {

namespace {

constexpr int mostPending = 100'000;

[[noreturn]] void misuse(const char* what) {
    std::fprintf(stderr, "ManualRunLoop: %s\n", what);
    std::abort();
}

} // namespace

class ManualRunLoop::ManualTimer final : public Timer {
public:
    explicit ManualTimer(ManualRunLoop& loop) : loop_(loop) { loop_.timers_.push_back(this); }
    ~ManualTimer() override {
        loop_.expectMainThread("timer destroyed");
        std::erase(loop_.timers_, this);
    }
    ManualTimer(const ManualTimer&) = delete;
    ManualTimer& operator=(const ManualTimer&) = delete;
    ManualTimer(ManualTimer&&) = delete;
    ManualTimer& operator=(ManualTimer&&) = delete;

    void startOnce(Duration after, std::function<void()> action) override {
        start(after, Duration::zero(), std::move(action));
    }
    void startRepeating(Duration interval, std::function<void()> action) override {
        if (interval <= Duration::zero()) {
            misuse("an interval that isn't positive");
        }
        start(interval, interval, std::move(action));
    }
    void stop() override {
        loop_.expectMainThread("timer stopped");
        action_ = nullptr;
    }
    bool isActive() const override { return action_ != nullptr; }

    TimerClock::time_point due() const { return due_; }
    /// What decides between timers.
    auto rank() const { return std::make_tuple(due_, startNumber_); }

    void fire() {
        const auto action = action_;
        if (interval_ == Duration::zero()) {
            action_ = nullptr;
        } else {
            due_ = dueNext(due_, interval_, loop_.now_);
        }
        (*action)();
    }

private:
    void start(Duration after, Duration interval, std::function<void()> action) {
        loop_.expectMainThread("timer started");
        interval_ = interval;
        due_ = dueAfter(loop_.now_, after);
        startNumber_ = loop_.starts_++;
        action_ = std::make_shared<const std::function<void()>>(std::move(action));
    }

    ManualRunLoop& loop_;
    Duration interval_ = Duration::zero(); ///< zero for a single call
    TimerClock::time_point due_;
    std::uint64_t startNumber_ = 0;
    std::shared_ptr<const std::function<void()>> action_; ///< null if no call will come
};

class ManualRunLoop::ManualSignal final : public Signal {
public:
    ManualSignal(ManualRunLoop& loop, std::function<void()> action)
        : loop_(loop), action_(std::make_shared<const std::function<void()>>(std::move(action))) {
        loop_.signals_.push_back(this);
    }
    ~ManualSignal() override {
        loop_.expectMainThread("signal destroyed");
        std::erase(loop_.signals_, this);
    }
    ManualSignal(const ManualSignal&) = delete;
    ManualSignal& operator=(const ManualSignal&) = delete;
    ManualSignal(ManualSignal&&) = delete;
    ManualSignal& operator=(ManualSignal&&) = delete;

    void raise() noexcept override { isRaised_.store(true, std::memory_order_release); }

    /// NO if it wasn't raised.
    bool deliver() {
        if (!isRaised_.exchange(false, std::memory_order_acq_rel)) {
            return false;
        }
        const auto action = action_; // held here, because it may destroy this
        (*action)();
        return true;
    }

private:
    ManualRunLoop& loop_;
    std::shared_ptr<const std::function<void()>> action_;
    std::atomic<bool> isRaised_ = false;
    static_assert(std::atomic<bool>::is_always_lock_free);
};

class ManualRunLoop::ManualWatch final : public DescriptorWatch {
public:
    ManualWatch(ManualRunLoop& loop, int descriptor, std::function<void()> action)
        : loop_(loop), descriptor_(descriptor),
          action_(std::make_shared<const std::function<void()>>(std::move(action))) {
        for (const ManualWatch* other : loop_.watches_) {
            if (other->descriptor_ == descriptor) {
                misuse("two watches of one descriptor");
            }
        }
        loop_.watches_.push_back(this);
    }
    ~ManualWatch() override {
        loop_.expectMainThread("watch destroyed");
        std::erase(loop_.watches_, this);
    }
    ManualWatch(const ManualWatch&) = delete;
    ManualWatch& operator=(const ManualWatch&) = delete;
    ManualWatch(ManualWatch&&) = delete;
    ManualWatch& operator=(ManualWatch&&) = delete;

    bool isReadable() const {
        pollfd asked = {.fd = descriptor_, .events = POLLIN, .revents = 0};
        return poll(&asked, 1, 0) == 1;
    }
    void call() {
        const auto action = action_; // held here, because it may destroy this
        (*action)();
    }

private:
    ManualRunLoop& loop_;
    const int descriptor_;
    std::shared_ptr<const std::function<void()>> action_;
};

ManualRunLoop::ManualRunLoop()
    : queue_([this] {
          const std::lock_guard guard(lock_);
          ++queued_;
          somethingNew_.notify_all();
      }) {}

ManualRunLoop::~ManualRunLoop() {
    if (!timers_.empty() || !signals_.empty() || !watches_.empty()) {
        misuse("destroyed before its timers, signals and watches");
    }
    queue_.close();
    runBackgroundWork();
}

bool ManualRunLoop::isMainThread() const {
    return std::this_thread::get_id() == mainThread_;
}

void ManualRunLoop::expectMainThread(const char* what) const {
    if (!isMainThread()) {
        misuse((std::string(what) + " on another thread than the main one").c_str());
    }
}

void ManualRunLoop::runLater(std::function<void()> action) {
    queue_.add(std::move(action));
}

void ManualRunLoop::runAndWait(std::function<void()> action) {
    if (isMainThread()) {
        action();
    } else {
        queue_.addAndWait(std::move(action));
    }
}

void ManualRunLoop::runInBackground(std::function<void()> action) {
    const std::lock_guard guard(lock_);
    backgroundWork_.push_back(std::move(action));
}

std::unique_ptr<Timer> ManualRunLoop::makeTimer() {
    expectMainThread("timer made");
    return std::make_unique<ManualTimer>(*this);
}

std::unique_ptr<Signal> ManualRunLoop::makeSignal(std::function<void()> action) {
    expectMainThread("signal made");
    return std::make_unique<ManualSignal>(*this, std::move(action));
}

std::unique_ptr<DescriptorWatch> ManualRunLoop::watchReadable(int descriptor,
                                                              std::function<void()> action) {
    expectMainThread("watch made");
    return std::make_unique<ManualWatch>(*this, descriptor, std::move(action));
}

bool ManualRunLoop::runOnePending() {
    const std::vector<ManualSignal*> signals = signals_;
    for (ManualSignal* signal : signals) {
        // One that ran before may have destroyed it.
        const bool exists = std::find(signals_.begin(), signals_.end(), signal) != signals_.end();
        if (exists && signal->deliver()) {
            return true;
        }
    }
    return queue_.runOne() || callOneWatch();
}

bool ManualRunLoop::callOneWatch() {
    const auto readable =
        std::find_if(watches_.begin(), watches_.end(),
                     [](const ManualWatch* watch) { return watch->isReadable(); });
    if (readable == watches_.end()) {
        return false;
    }
    std::rotate(readable, readable + 1, watches_.end());
    watches_.back()->call();
    return true;
}

void ManualRunLoop::runPending() {
    expectMainThread("runPending called");
    {
        const std::lock_guard guard(lock_);
        seen_ = queued_;
    }
    for (int count = 0; runOnePending(); ++count) {
        if (count == mostPending) {
            misuse("queued work never ends");
        }
    }
}

ManualRunLoop::ManualTimer* ManualRunLoop::nextTimer() const {
    ManualTimer* next = nullptr;
    for (ManualTimer* timer : timers_) {
        if (timer->isActive() && (next == nullptr || timer->rank() < next->rank())) {
            next = timer;
        }
    }
    return next;
}

void ManualRunLoop::advance(Timer::Duration duration) {
    const auto end = dueAfter(now_, duration);
    runPending();
    for (ManualTimer* timer = nextTimer(); timer != nullptr && timer->due() <= end;
         timer = nextTimer()) {
        now_ = std::max(now_, timer->due());
        timer->fire();
        runPending();
    }
    now_ = std::max(now_, end);
}

void ManualRunLoop::beBusyFor(Timer::Duration duration) {
    expectMainThread("beBusyFor called");
    now_ = dueAfter(now_, duration);
}

void ManualRunLoop::runBackgroundWork() {
    expectMainThread("runBackgroundWork called");
    bool isDone = false;
    std::thread worker([&] {
        std::unique_lock guard(lock_);
        while (!backgroundWork_.empty()) {
            std::function<void()> work = std::move(backgroundWork_.front());
            backgroundWork_.pop_front();
            guard.unlock();
            work();
            work = nullptr;
            guard.lock();
        }
        isDone = true;
        somethingNew_.notify_all();
    });
    std::unique_lock guard(lock_);
    while (!isDone) {
        const std::uint64_t served = queued_;
        guard.unlock();
        while (queue_.isAwaited()) {
            queue_.runOne();
        }
        guard.lock();
        somethingNew_.wait(guard, [&] { return isDone || queued_ != served; });
    }
    guard.unlock();
    worker.join();
}

void ManualRunLoop::waitForPending() {
    std::unique_lock guard(lock_);
    somethingNew_.wait_for(guard, std::chrono::milliseconds(5),
                           [this] { return queued_ != seen_; });
}

std::optional<Timer::Duration> ManualRunLoop::untilNextTimer() const {
    const ManualTimer* const timer = nextTimer();
    return timer != nullptr ? std::optional(std::max(timer->due() - now_, Timer::Duration::zero()))
                            : std::nullopt;
}

std::size_t ManualRunLoop::activeTimers() const {
    return static_cast<std::size_t>(
        std::count_if(timers_.begin(), timers_.end(),
                      [](const ManualTimer* timer) { return timer->isActive(); }));
}

} // namespace deckmate::test
