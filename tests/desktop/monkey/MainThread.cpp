#include "desktop/monkey/MainThread.h"

#include <future>
#include <memory>

#include <QCoreApplication>
#include <QTimer>

namespace deckmate::test {

namespace {

/// Nothing at all would not be a timer's.
constexpr std::chrono::milliseconds shortest{1};

void waitFor(const std::future<void>& done) {
    if (done.wait_for(MainThread::limit) != std::future_status::ready) {
        throw Hang();
    }
}

} // namespace

MainThread::MainThread() : filter_(XConnection().pingType()) {
    pinged_.create();
    QCoreApplication::instance()->installNativeEventFilter(&filter_);
}

MainThread::~MainThread() {
    QCoreApplication::instance()->removeNativeEventFilter(&filter_);
}

void MainThread::post(const std::function<void()>& action) const {
    QMetaObject::invokeMethod(&context_, action, Qt::QueuedConnection);
}

void MainThread::call(const std::function<void()>& action) const {
    const auto done = std::make_shared<std::promise<void>>();
    post([done, action] {
        action();
        done->set_value();
    });
    waitFor(done->get_future());
}

void MainThread::callLate(const std::function<void()>& action) const {
    const auto done = std::make_shared<std::promise<void>>();
    post([this, done, action] {
        QTimer::singleShot(shortest, Qt::PreciseTimer, &context_, [done, action] {
            action();
            done->set_value();
        });
    });
    waitFor(done->get_future());
}

void MainThread::settle(const XConnection& connection) {
    const std::uint32_t token = ++pings_;
    std::uint32_t window = 0;
    call([&] { window = static_cast<std::uint32_t>(pinged_.winId()); });
    connection.ping(window, token);
    const auto latest = std::chrono::steady_clock::now() + limit;
    bool isHeard = false;
    while (!isHeard) {
        callLate([&] { isHeard = filter_.newest >= token; });
        if (std::chrono::steady_clock::now() > latest) {
            throw Hang();
        }
    }
    // The events before the ping may wait in Qt's own queue.
    callLate([] {});
}

} // namespace deckmate::test
