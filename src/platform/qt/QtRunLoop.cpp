#include "platform/qt/QtRunLoop.h"

#include "platform/BackgroundThreads.h"
#include "platform/MainQueue.h"
#include "platform/TimerGrid.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <system_error>
#include <thread>
#include <utility>

#include <QCoreApplication>
#include <QEventLoop>
#include <QObject>
#include <QSocketNotifier>
#include <QTimer>

#include <sys/eventfd.h>
#include <unistd.h>

namespace deckmate {

namespace {

using std::chrono::milliseconds;

constexpr milliseconds shortestInterval{1};
/// QTimer counts milliseconds in 32 bits: a longer wait is made of several.
constexpr milliseconds longestWait = std::chrono::hours(24);
constexpr milliseconds askingInterval{5};
/// What the clock can still count.
constexpr auto longestLimit = std::chrono::floor<milliseconds>(Timer::Duration::max());

/// Wakes the main thread from any other, by nothing but a system call that never waits.
class Wakener {
public:
    /// `flags` as eventfd(2) takes them: with EFD_SEMAPHORE each wake() makes a call of its own.
    Wakener(int flags, const std::function<void()>& action)
        : descriptor_(flags), notifier_(descriptor_.number, QSocketNotifier::Read) {
        QObject::connect(&notifier_, &QSocketNotifier::activated,
                         [number = descriptor_.number, action] {
                             std::uint64_t count = 0;
                             if (read(number, &count, sizeof count) == sizeof count) {
                                 action();
                             }
                         });
    }

    void wake() const noexcept {
        const std::uint64_t one = 1;
        // Fails only when the counter is full, and then the main thread is being woken already.
        [[maybe_unused]] const ssize_t written = write(descriptor_.number, &one, sizeof one);
    }

private:
    struct Descriptor {
        explicit Descriptor(int flags) : number(eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC | flags)) {
            if (number < 0) {
                throw std::system_error(errno, std::generic_category(), "eventfd");
            }
        }
        ~Descriptor() { close(number); }
        Descriptor(const Descriptor&) = delete;
        Descriptor& operator=(const Descriptor&) = delete;
        Descriptor(Descriptor&&) = delete;
        Descriptor& operator=(Descriptor&&) = delete;

        int number;
    };

    Descriptor descriptor_;
    QSocketNotifier notifier_; ///< gone before what it watches is closed
};

class QtSignal final : public Signal {
public:
    explicit QtSignal(const std::function<void()>& action) : wakener_(0, action) {}

    void raise() noexcept override { wakener_.wake(); }

private:
    Wakener wakener_;
};

class QtTimer final : public Timer {
public:
    QtTimer() {
        timer_.setSingleShot(true);
        timer_.setTimerType(Qt::PreciseTimer);
        QObject::connect(&timer_, &QTimer::timeout, [this] { timeOut(); });
    }

    void startOnce(Duration after, std::function<void()> action) override {
        start(after, Duration::zero(), std::move(action));
    }

    void startRepeating(Duration interval, std::function<void()> action) override {
        const Duration counted = std::max<Duration>(interval, shortestInterval);
        start(counted, counted, std::move(action));
    }

    void stop() override {
        timer_.stop();
        action_ = nullptr;
    }

    bool isActive() const override { return action_ != nullptr; }

private:
    void start(Duration after, Duration interval, std::function<void()> action) {
        interval_ = interval;
        action_ = std::make_shared<const std::function<void()>>(std::move(action));
        due_ = dueAfter(TimerClock::now(), after);
        wait();
    }

    void wait() {
        const auto left = std::chrono::ceil<milliseconds>(due_ - TimerClock::now());
        timer_.start(std::clamp(left, milliseconds::zero(), longestWait));
    }

    void timeOut() {
        const auto now = TimerClock::now();
        if (now < due_) {
            wait();
            return;
        }
        // Held here, because the action may start, stop or destroy this timer.
        const auto action = action_;
        if (interval_ == Duration::zero()) {
            action_ = nullptr;
        } else {
            due_ = dueNext(due_, interval_, now);
            wait();
        }
        (*action)();
    }

    QTimer timer_;
    Duration interval_ = Duration::zero(); ///< zero for a single call
    TimerClock::time_point due_;
    std::shared_ptr<const std::function<void()>> action_; ///< null if no call will come
};

class QtDescriptorWatch final : public DescriptorWatch {
public:
    QtDescriptorWatch(int descriptor, std::function<void()> action)
        : action_(std::make_shared<const std::function<void()>>(std::move(action))),
          notifier_(descriptor, QSocketNotifier::Read) {
        QObject::connect(&notifier_, &QSocketNotifier::activated, [this] {
            const auto called = action_; // held here, because it may destroy this watch
            (*called)();
        });
    }

private:
    std::shared_ptr<const std::function<void()>> action_;
    QSocketNotifier notifier_;
};

/// Qt keeps references to both arguments for as long as the application exists.
std::unique_ptr<QCoreApplication> applicationIfNone() {
    static int count = 1;
    static char name[] = "orlo-h8-deckmate";
    static char* arguments[] = {name, nullptr};
    return QCoreApplication::instance() == nullptr
               ? std::make_unique<QCoreApplication>(count, arguments)
               : nullptr;
}

} // namespace

// The hand-over between threads is our own, not Qt's: the thread sanitizer sees all of it.
struct QtRunLoop::Impl {
    std::thread::id mainThread = std::this_thread::get_id();
    std::unique_ptr<QCoreApplication> application = applicationIfNone();
    Wakener wakener{EFD_SEMAPHORE, [this] { queue.runOne(); }};
    MainQueue queue{[this] { wakener.wake(); }};
    BackgroundThreads background;
};

QtRunLoop::QtRunLoop() : impl_(std::make_unique<Impl>()) {}

QtRunLoop::~QtRunLoop() {
    // First, because work in the background may be waiting for the main thread.
    impl_->queue.close();
    // Here, because that work may still come to this loop.
    impl_->background.finish();
}

bool QtRunLoop::isMainThread() const {
    return std::this_thread::get_id() == impl_->mainThread;
}

void QtRunLoop::runLater(std::function<void()> action) {
    impl_->queue.add(std::move(action));
}

void QtRunLoop::runAndWait(std::function<void()> action) {
    if (isMainThread()) {
        action();
    } else {
        impl_->queue.addAndWait(std::move(action));
    }
}

void QtRunLoop::runInBackground(std::function<void()> action) {
    impl_->background.run(std::move(action));
}

std::unique_ptr<Timer> QtRunLoop::makeTimer() {
    return std::make_unique<QtTimer>();
}

std::unique_ptr<Signal> QtRunLoop::makeSignal(std::function<void()> action) {
    return std::make_unique<QtSignal>(std::move(action));
}

std::unique_ptr<DescriptorWatch> QtRunLoop::watchReadable(int descriptor,
                                                          std::function<void()> action) {
    return std::make_unique<QtDescriptorWatch>(descriptor, std::move(action));
}

void QtRunLoop::run() {
    QCoreApplication::exec();
}

void QtRunLoop::quit() {
    QCoreApplication::quit();
}

bool QtRunLoop::runUntil(const std::function<bool()>& isDone, milliseconds limit) {
    const auto end = dueAfter(TimerClock::now(), std::min(limit, longestLimit));
    QTimer ask; // what other threads change comes without an event
    ask.start(askingInterval);
    while (!isDone()) {
        if (TimerClock::now() >= end) {
            return false;
        }
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    return true;
}

} // namespace deckmate
