#include "platform/RunLoop.h"

#include "platform/qt/QtRunLoop.h"
#include "support/ManualRunLoop.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <thread>
#include <type_traits>
#include <utility>
#include <vector>

#include <unistd.h>

namespace deckmate {
namespace {

using namespace std::chrono_literals;
using test::ManualRunLoop;
using Calls = std::vector<std::string>;

/// Only to end a test that hangs.
constexpr std::chrono::seconds limit = 60s;

bool runUntil(QtRunLoop& loop, const std::function<bool()>& isDone) {
    return loop.runUntil(isDone, limit);
}

bool runUntil(ManualRunLoop& loop, const std::function<bool()>& isDone) {
    const auto end = std::chrono::steady_clock::now() + limit;
    while (!isDone() && std::chrono::steady_clock::now() < end) {
        loop.runPending();
        loop.runBackgroundWork();
        if (!isDone()) {
            const auto next = loop.untilNextTimer();
            next ? loop.advance(*next) : loop.waitForPending();
        }
    }
    return isDone();
}

/// A pipe, which is what other programs hand out as a descriptor.
class Pipe {
public:
    Pipe() {
        std::array<int, 2> ends = {};
        EXPECT_EQ(pipe(ends.data()), 0);
        reading = ends[0];
        writing_ = ends[1];
    }
    ~Pipe() {
        close(reading);
        hangUp();
    }
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;
    Pipe(Pipe&&) = delete;
    Pipe& operator=(Pipe&&) = delete;

    void put(const std::string& text) const {
        EXPECT_EQ(write(writing_, text.data(), text.size()), static_cast<ssize_t>(text.size()));
    }
    /// Up to so many characters of what has to be there.
    std::string take(std::size_t most) const {
        std::string text(most, ' ');
        const ssize_t count = read(reading, text.data(), text.size());
        text.resize(static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
        return text;
    }
    void hangUp() {
        if (writing_ >= 0) {
            close(std::exchange(writing_, -1));
        }
    }

    int reading = -1;

private:
    int writing_ = -1;
};

template <class Loop>
class RunLoopContract : public testing::Test {
protected:
    std::function<void()> noting(const std::string& label) {
        return [this, label] { calls_.push_back(label); };
    }
    bool runForCalls(std::size_t count) {
        return runUntil(*loop_, [this, count] { return calls_.size() >= count; });
    }
    /// Everything that is on its way to the main thread has arrived, and then some time passed.
    bool settle() {
        bool isReached = false;
        const std::unique_ptr<Timer> timer = loop_->makeTimer();
        timer->startOnce(10ms, [&] { loop_->runLater([&] { isReached = true; }); });
        return runUntil(*loop_, [&] { return isReached; });
    }

    std::unique_ptr<Loop> loop_ = std::make_unique<Loop>();
    Calls calls_;
};

class LoopNames {
public:
    template <class Loop>
    static std::string GetName(int) {
        return std::is_same_v<Loop, QtRunLoop> ? "QtRunLoop" : "ManualRunLoop";
    }
};

using Loops = testing::Types<ManualRunLoop, QtRunLoop>;
TYPED_TEST_SUITE(RunLoopContract, Loops, LoopNames);

TYPED_TEST(RunLoopContract, IsTheOneThatMainGives) {
    EXPECT_EQ(&RunLoop::main(), this->loop_.get());
}

TYPED_TEST(RunLoopContract, TheThreadThatMadeItIsTheMainOne) {
    EXPECT_TRUE(this->loop_->isMainThread());
    bool isMain = true;
    std::thread([&] { isMain = this->loop_->isMainThread(); }).join();
    EXPECT_FALSE(isMain);
}

// runLater

TYPED_TEST(RunLoopContract, LaterIsNotInsideTheCall) {
    this->loop_->runLater(this->noting("later"));
    EXPECT_EQ(this->calls_, Calls{});
    EXPECT_TRUE(this->runForCalls(1));
    EXPECT_EQ(this->calls_, Calls{"later"});
}

TYPED_TEST(RunLoopContract, LaterKeepsTheOrder) {
    this->loop_->runLater(this->noting("first"));
    this->loop_->runLater(this->noting("second"));
    this->loop_->runLater(this->noting("third"));
    EXPECT_TRUE(this->runForCalls(3));
    EXPECT_EQ(this->calls_, (Calls{"first", "second", "third"}));
}

TYPED_TEST(RunLoopContract, LaterInsideAnActionComesAfterThoseBefore) {
    this->loop_->runLater([this] {
        this->loop_->runLater(this->noting("inner"));
        this->calls_.emplace_back("outer");
    });
    this->loop_->runLater(this->noting("second"));
    EXPECT_TRUE(this->runForCalls(3));
    EXPECT_EQ(this->calls_, (Calls{"outer", "second", "inner"}));
}

TYPED_TEST(RunLoopContract, LaterFromAnotherThreadRunsOnTheMainOne) {
    std::thread::id ranOn;
    std::thread([&] { this->loop_->runLater([&] { ranOn = std::this_thread::get_id(); }); }).join();
    EXPECT_TRUE(runUntil(*this->loop_, [&] { return ranOn != std::thread::id(); }));
    EXPECT_EQ(ranOn, std::this_thread::get_id());
}

TYPED_TEST(RunLoopContract, WhatNeverRanIsDroppedAtTheEnd) {
    auto held = std::make_shared<int>(0);
    const std::weak_ptr<int> watched = held;
    this->loop_->runLater([this, held] { this->calls_.emplace_back("late"); });
    held = nullptr;
    this->loop_ = nullptr;
    EXPECT_TRUE(watched.expired());
    EXPECT_EQ(this->calls_, Calls{});
}

// runAndWait

TYPED_TEST(RunLoopContract, WaitingOnTheMainThreadRunsAtOnce) {
    this->loop_->runLater(this->noting("queued"));
    this->loop_->runAndWait(this->noting("at once"));
    EXPECT_EQ(this->calls_, Calls{"at once"});
}

TYPED_TEST(RunLoopContract, WaitingElsewhereReturnsWhenTheActionHasRun) {
    std::atomic<bool> isOver = false;
    std::thread::id ranOn;
    bool hadRun = false;
    std::thread waiter([&] {
        this->loop_->runAndWait([&] { ranOn = std::this_thread::get_id(); });
        hadRun = ranOn != std::thread::id();
        isOver = true;
    });
    EXPECT_TRUE(runUntil(*this->loop_, [&] { return isOver.load(); }));
    waiter.join();
    EXPECT_EQ(ranOn, std::this_thread::get_id());
    EXPECT_TRUE(hadRun);
}

TYPED_TEST(RunLoopContract, WaitingComesAfterWhatWasGivenBefore) {
    std::atomic<bool> isOver = false;
    std::thread waiter([&] {
        this->loop_->runLater(this->noting("later"));
        this->loop_->runAndWait(this->noting("awaited"));
        isOver = true;
    });
    EXPECT_TRUE(runUntil(*this->loop_, [&] { return isOver.load(); }));
    waiter.join();
    EXPECT_EQ(this->calls_, (Calls{"later", "awaited"}));
}

TYPED_TEST(RunLoopContract, WaitingEndsWithTheLoop) {
    RunLoop* const loop = this->loop_.get();
    std::thread waiter([this, loop] {
        loop->runAndWait(this->noting("never"));
        loop->runAndWait(this->noting("nor this"));
    });
    // The loop stays until its background work is done: wherever the other thread is when the end
    // begins, before, inside or between its calls, the loop is there for it.
    loop->runInBackground([&waiter] { waiter.join(); });
    this->loop_ = nullptr;
    EXPECT_EQ(this->calls_, Calls{});
}

// runInBackground

TYPED_TEST(RunLoopContract, BackgroundWorkRunsOnAnotherThread) {
    std::atomic<bool> isDone = false;
    bool wasMain = true;
    this->loop_->runInBackground([&] {
        wasMain = this->loop_->isMainThread();
        isDone = true;
    });
    EXPECT_TRUE(runUntil(*this->loop_, [&] { return isDone.load(); }));
    EXPECT_FALSE(wasMain);
}

TYPED_TEST(RunLoopContract, BackgroundWorkBringsItsResultToTheMainThread) {
    int shown = 0;
    this->loop_->runInBackground([&] {
        int found = 42;
        this->loop_->runLater([&shown, found] { shown = found; });
    });
    EXPECT_TRUE(runUntil(*this->loop_, [&] { return shown != 0; }));
    EXPECT_EQ(shown, 42);
}

TYPED_TEST(RunLoopContract, BackgroundWorkMayWaitForTheMainThread) {
    std::atomic<bool> isDone = false;
    std::thread::id ranOn;
    this->loop_->runInBackground([&] {
        this->loop_->runAndWait([&] { ranOn = std::this_thread::get_id(); });
        isDone = true;
    });
    EXPECT_TRUE(runUntil(*this->loop_, [&] { return isDone.load(); }));
    EXPECT_EQ(ranOn, std::this_thread::get_id());
}

TYPED_TEST(RunLoopContract, BackgroundWorkIsDoneBeforeTheLoopEnds) {
    RunLoop* const loop = this->loop_.get();
    std::atomic<int> done = 0;
    for (int i = 0; i < 20; ++i) {
        loop->runInBackground([&done, loop] {
            loop->runAndWait([] {});
            ++done;
        });
    }
    this->loop_ = nullptr;
    EXPECT_EQ(done, 20);
}

// Timers

TYPED_TEST(RunLoopContract, ATimerIsNotActiveUntilStarted) {
    const std::unique_ptr<Timer> timer = this->loop_->makeTimer();
    EXPECT_FALSE(timer->isActive());
    timer->stop();
    EXPECT_FALSE(timer->isActive());
}

TYPED_TEST(RunLoopContract, AOneShotTimerCallsOnce) {
    const std::unique_ptr<Timer> timer = this->loop_->makeTimer();
    timer->startOnce(1ms, this->noting("once"));
    EXPECT_TRUE(timer->isActive());
    EXPECT_TRUE(this->runForCalls(1));
    EXPECT_FALSE(timer->isActive());
    EXPECT_TRUE(this->settle());
    EXPECT_EQ(this->calls_, Calls{"once"});
}

TYPED_TEST(RunLoopContract, AOneShotTimerIsOverInsideItsCall) {
    const std::unique_ptr<Timer> timer = this->loop_->makeTimer();
    timer->startOnce(1ms,
                     [&] { this->calls_.emplace_back(timer->isActive() ? "active" : "over"); });
    EXPECT_TRUE(this->runForCalls(1));
    EXPECT_EQ(this->calls_, Calls{"over"});
}

TYPED_TEST(RunLoopContract, ATimerWithoutAWaitCallsLaterAllTheSame) {
    const std::unique_ptr<Timer> none = this->loop_->makeTimer();
    const std::unique_ptr<Timer> past = this->loop_->makeTimer();
    none->startOnce(0ns, this->noting("called"));
    past->startOnce(-1s, this->noting("called"));
    EXPECT_EQ(this->calls_, Calls{});
    EXPECT_TRUE(this->runForCalls(2));
}

TYPED_TEST(RunLoopContract, TheTimerThatIsDueFirstCallsFirst) {
    const std::unique_ptr<Timer> second = this->loop_->makeTimer();
    const std::unique_ptr<Timer> first = this->loop_->makeTimer();
    second->startOnce(30ms, this->noting("second"));
    first->startOnce(10ms, this->noting("first"));
    EXPECT_TRUE(this->runForCalls(2));
    EXPECT_EQ(this->calls_, (Calls{"first", "second"}));
}

TYPED_TEST(RunLoopContract, ARepeatingTimerCallsUntilStopped) {
    const std::unique_ptr<Timer> timer = this->loop_->makeTimer();
    timer->startRepeating(1ms, [&] {
        this->calls_.emplace_back(timer->isActive() ? "active" : "over");
        if (this->calls_.size() == 3) {
            timer->stop();
        }
    });
    EXPECT_TRUE(this->runForCalls(3));
    EXPECT_FALSE(timer->isActive());
    EXPECT_TRUE(this->settle());
    EXPECT_EQ(this->calls_, (Calls{"active", "active", "active"}));
}

TYPED_TEST(RunLoopContract, AStoppedTimerDoesntCall) {
    const std::unique_ptr<Timer> timer = this->loop_->makeTimer();
    timer->startOnce(1ms, this->noting("stopped"));
    timer->stop();
    EXPECT_FALSE(timer->isActive());
    EXPECT_TRUE(this->settle());
    EXPECT_EQ(this->calls_, Calls{});
}

TYPED_TEST(RunLoopContract, ADestroyedTimerDoesntCall) {
    std::unique_ptr<Timer> timer = this->loop_->makeTimer();
    timer->startRepeating(1ms, this->noting("destroyed"));
    timer = nullptr;
    EXPECT_TRUE(this->settle());
    EXPECT_EQ(this->calls_, Calls{});
}

TYPED_TEST(RunLoopContract, StartingReplacesWhatWasStartedBefore) {
    const std::unique_ptr<Timer> timer = this->loop_->makeTimer();
    timer->startRepeating(1ms, this->noting("before"));
    timer->startOnce(2ms, this->noting("after"));
    EXPECT_TRUE(this->runForCalls(1));
    EXPECT_TRUE(this->settle());
    EXPECT_EQ(this->calls_, Calls{"after"});
}

TYPED_TEST(RunLoopContract, ATimerMayBeStartedAnewInItsOwnCall) {
    const std::unique_ptr<Timer> timer = this->loop_->makeTimer();
    timer->startRepeating(1ms, [&] {
        this->calls_.emplace_back("first");
        timer->startOnce(1ms, this->noting("second"));
    });
    EXPECT_TRUE(this->runForCalls(2));
    EXPECT_TRUE(this->settle());
    EXPECT_EQ(this->calls_, (Calls{"first", "second"}));
}

TYPED_TEST(RunLoopContract, ATimerMayBeDestroyedInItsOwnCall) {
    std::unique_ptr<Timer> timer = this->loop_->makeTimer();
    const auto held = std::make_shared<std::string>("held by the action");
    timer->startRepeating(1ms, [this, &timer, held] {
        timer = nullptr;
        this->calls_.push_back(*held);
    });
    EXPECT_TRUE(this->runForCalls(1));
    EXPECT_TRUE(this->settle());
    EXPECT_EQ(this->calls_, Calls{"held by the action"});
}

TYPED_TEST(RunLoopContract, ATimerMayStopAnotherThatIsDueAtTheSameTime) {
    const std::unique_ptr<Timer> one = this->loop_->makeTimer();
    const std::unique_ptr<Timer> other = this->loop_->makeTimer();
    one->startOnce(0ns, [&] {
        this->calls_.emplace_back("called");
        other->stop();
    });
    other->startOnce(0ns, [&] {
        this->calls_.emplace_back("called");
        one->stop();
    });
    EXPECT_TRUE(this->settle());
    EXPECT_EQ(this->calls_, Calls{"called"});
}

TYPED_TEST(RunLoopContract, AVeryLongWaitIsNoShortOne) {
    const std::unique_ptr<Timer> timer = this->loop_->makeTimer();
    timer->startOnce(Timer::Duration::max(), this->noting("far too early"));
    EXPECT_TRUE(this->settle());
    EXPECT_TRUE(timer->isActive());
    EXPECT_EQ(this->calls_, Calls{});
}

// Signals

TYPED_TEST(RunLoopContract, ASignalIsNotDeliveredInsideTheRaise) {
    const std::unique_ptr<Signal> signal = this->loop_->makeSignal(this->noting("raised"));
    signal->raise();
    EXPECT_EQ(this->calls_, Calls{});
    EXPECT_TRUE(this->runForCalls(1));
}

TYPED_TEST(RunLoopContract, ASignalThatIsNotRaisedCallsNothing) {
    const std::unique_ptr<Signal> signal = this->loop_->makeSignal(this->noting("raised"));
    EXPECT_TRUE(this->settle());
    EXPECT_EQ(this->calls_, Calls{});
}

TYPED_TEST(RunLoopContract, RaisesBeforeTheCallMakeOneCall) {
    const std::unique_ptr<Signal> signal = this->loop_->makeSignal(this->noting("raised"));
    signal->raise();
    signal->raise();
    signal->raise();
    EXPECT_TRUE(this->settle());
    EXPECT_EQ(this->calls_, Calls{"raised"});
}

TYPED_TEST(RunLoopContract, ARaiseInsideTheCallMakesAnother) {
    std::unique_ptr<Signal> signal;
    signal = this->loop_->makeSignal([&] {
        this->calls_.emplace_back("raised");
        if (this->calls_.size() == 1) {
            signal->raise();
        }
    });
    signal->raise();
    EXPECT_TRUE(this->settle());
    EXPECT_EQ(this->calls_, (Calls{"raised", "raised"}));
}

TYPED_TEST(RunLoopContract, ADestroyedSignalIsNotDelivered) {
    std::unique_ptr<Signal> signal = this->loop_->makeSignal(this->noting("raised"));
    signal->raise();
    signal = nullptr;
    EXPECT_TRUE(this->settle());
    EXPECT_EQ(this->calls_, Calls{});
}

TYPED_TEST(RunLoopContract, ASignalMayBeDestroyedInItsOwnCall) {
    std::unique_ptr<Signal> signal;
    const auto held = std::make_shared<std::string>("held by the action");
    signal = this->loop_->makeSignal([this, &signal, held] {
        signal = nullptr;
        this->calls_.push_back(*held);
    });
    signal->raise();
    EXPECT_TRUE(this->runForCalls(1));
    EXPECT_EQ(this->calls_, Calls{"held by the action"});
}

TYPED_TEST(RunLoopContract, TheCallSeesAllThatWasWrittenBeforeTheRaise) {
    constexpr int last = 1000;
    std::atomic<int> written = 0;
    int seen = 0;
    const std::unique_ptr<Signal> signal =
        this->loop_->makeSignal([&] { seen = written.load(std::memory_order_relaxed); });
    std::thread writer([&] {
        for (int value = 1; value <= last; ++value) {
            written.store(value, std::memory_order_relaxed);
            signal->raise();
        }
    });
    EXPECT_TRUE(runUntil(*this->loop_, [&] { return seen == last; }));
    writer.join();
}

TYPED_TEST(RunLoopContract, SignalsDontMix) {
    const std::unique_ptr<Signal> one = this->loop_->makeSignal(this->noting("one"));
    const std::unique_ptr<Signal> other = this->loop_->makeSignal(this->noting("other"));
    other->raise();
    EXPECT_TRUE(this->settle());
    EXPECT_EQ(this->calls_, Calls{"other"});
}

// Descriptors

TYPED_TEST(RunLoopContract, AReadableDescriptorCalls) {
    const Pipe pipe;
    const auto watch =
        this->loop_->watchReadable(pipe.reading, [&] { this->calls_.push_back(pipe.take(100)); });
    pipe.put("news");
    EXPECT_EQ(this->calls_, Calls{});
    EXPECT_TRUE(this->settle());
    EXPECT_EQ(this->calls_, Calls{"news"});
}

TYPED_TEST(RunLoopContract, ADescriptorWithNothingToReadCallsNothing) {
    const Pipe pipe;
    const auto watch = this->loop_->watchReadable(pipe.reading, this->noting("readable"));
    EXPECT_TRUE(this->settle());
    EXPECT_EQ(this->calls_, Calls{});
}

TYPED_TEST(RunLoopContract, WhatIsLeftToReadCallsAgain) {
    const Pipe pipe;
    const auto watch =
        this->loop_->watchReadable(pipe.reading, [&] { this->calls_.push_back(pipe.take(1)); });
    pipe.put("abc");
    EXPECT_TRUE(this->settle());
    EXPECT_EQ(this->calls_, (Calls{"a", "b", "c"}));
}

TYPED_TEST(RunLoopContract, WhatAnotherThreadWritesIsSeen) {
    const Pipe pipe;
    const auto watch =
        this->loop_->watchReadable(pipe.reading, [&] { this->calls_.push_back(pipe.take(100)); });
    std::thread writer([&] { pipe.put("from afar"); });
    EXPECT_TRUE(this->runForCalls(1));
    writer.join();
    EXPECT_EQ(this->calls_, Calls{"from afar"});
}

TYPED_TEST(RunLoopContract, ADescriptorThatWasHungUpCalls) {
    Pipe pipe;
    std::unique_ptr<DescriptorWatch> watch;
    watch = this->loop_->watchReadable(pipe.reading, [&] {
        this->calls_.push_back("end" + pipe.take(100));
        watch = nullptr;
    });
    pipe.hangUp();
    EXPECT_TRUE(this->settle());
    EXPECT_EQ(this->calls_, Calls{"end"});
}

TYPED_TEST(RunLoopContract, ADestroyedWatchDoesntCall) {
    const Pipe pipe;
    auto watch = this->loop_->watchReadable(pipe.reading, this->noting("readable"));
    pipe.put("news");
    watch = nullptr;
    EXPECT_TRUE(this->settle());
    EXPECT_EQ(this->calls_, Calls{});
}

TYPED_TEST(RunLoopContract, AWatchMayBeDestroyedInItsOwnCall) {
    const Pipe pipe;
    std::unique_ptr<DescriptorWatch> watch;
    const auto held = std::make_shared<std::string>("held by the action");
    watch = this->loop_->watchReadable(pipe.reading, [this, &watch, held] {
        watch = nullptr;
        this->calls_.push_back(*held);
    });
    pipe.put("never read");
    EXPECT_TRUE(this->settle());
    EXPECT_EQ(this->calls_, Calls{"held by the action"});
}

TYPED_TEST(RunLoopContract, AWatchMayDestroyAnotherThatIsReadable) {
    const Pipe first;
    const Pipe second;
    std::unique_ptr<DescriptorWatch> one;
    std::unique_ptr<DescriptorWatch> other;
    one = this->loop_->watchReadable(first.reading, [&] {
        this->calls_.push_back(first.take(100));
        other = nullptr;
    });
    other = this->loop_->watchReadable(second.reading, [&] {
        this->calls_.push_back(second.take(100));
        one = nullptr;
    });
    first.put("called");
    second.put("called");
    EXPECT_TRUE(this->settle());
    EXPECT_EQ(this->calls_, Calls{"called"});
}

TYPED_TEST(RunLoopContract, WatchesDontMix) {
    const Pipe first;
    const Pipe second;
    const auto one = this->loop_->watchReadable(
        first.reading, [&] { this->calls_.push_back("one " + first.take(100)); });
    const auto other = this->loop_->watchReadable(
        second.reading, [&] { this->calls_.push_back("other " + second.take(100)); });
    second.put("news");
    EXPECT_TRUE(this->settle());
    EXPECT_EQ(this->calls_, Calls{"other news"});
}

TYPED_TEST(RunLoopContract, ADescriptorMayBeWatchedAnew) {
    const Pipe pipe;
    auto watch = this->loop_->watchReadable(pipe.reading, this->noting("first"));
    watch = nullptr;
    watch =
        this->loop_->watchReadable(pipe.reading, [&] { this->calls_.push_back(pipe.take(100)); });
    pipe.put("second");
    EXPECT_TRUE(this->settle());
    EXPECT_EQ(this->calls_, Calls{"second"});
}

} // namespace
} // namespace deckmate
