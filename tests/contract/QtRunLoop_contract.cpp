// What only the real event loop does: work at the same time, waiting without turning, nested loops.
#include "platform/qt/QtRunLoop.h"

#include <atomic>
#include <chrono>
#include <functional>
#include <gtest/gtest.h>
#include <latch>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace deckmate {
namespace {

using namespace std::chrono_literals;
using std::chrono::steady_clock;
using Calls = std::vector<std::string>;

TEST(QtRunLoop, BackgroundWorkRunsAtTheSameTime) {
    QtRunLoop loop;
    std::latch both(2);
    std::atomic<int> done = 0;
    for (int i = 0; i < 2; ++i) {
        loop.runInBackground([&] {
            both.arrive_and_wait();
            ++done;
        });
    }
    EXPECT_TRUE(loop.runUntil([&] { return done == 2; }, 60s));
}

TEST(QtRunLoop, RunUntilSaysWhetherItCameTrue) {
    QtRunLoop loop;
    EXPECT_TRUE(loop.runUntil([] { return true; }, 0ms));
    EXPECT_FALSE(loop.runUntil([] { return false; }, 0ms));
    EXPECT_FALSE(loop.runUntil([] { return false; }, 20ms));
}

TEST(QtRunLoop, RunUntilNeedsNoEventForWhatAnotherThreadChanges) {
    QtRunLoop loop;
    std::atomic<bool> isSet = false;
    std::thread other([&] { isSet = true; });
    EXPECT_TRUE(loop.runUntil([&] { return isSet.load(); }, std::chrono::milliseconds::max()));
    other.join();
}

TEST(QtRunLoop, RunUntilWaitsInsteadOfAskingAllTheTime) {
    QtRunLoop loop;
    int questions = 0;
    loop.runUntil([&] { return ++questions, false; }, 200ms);
    EXPECT_LT(questions, 1000); // some forty; turning would be many thousands
}

TEST(QtRunLoop, ATimerIsNeverEarly) {
    QtRunLoop loop;
    const std::unique_ptr<Timer> timer = loop.makeTimer();
    for (const auto wait : {1ns, 999'999ns, 1'000'001ns, 5'300'000ns}) {
        bool wasCalled = false;
        const steady_clock::time_point start = steady_clock::now();
        timer->startOnce(wait, [&] { wasCalled = true; });
        EXPECT_TRUE(loop.runUntil([&] { return wasCalled; }, 60s));
        EXPECT_GE(steady_clock::now() - start, wait);
    }
}

TEST(QtRunLoop, ARepeatingTimerDoesntRunAhead) {
    QtRunLoop loop;
    const std::unique_ptr<Timer> timer = loop.makeTimer();
    int calls = 0;
    const steady_clock::time_point start = steady_clock::now();
    timer->startRepeating(3'300'000ns, [&] { ++calls; });
    EXPECT_TRUE(loop.runUntil([&] { return calls == 10; }, 60s));
    EXPECT_GE(steady_clock::now() - start, 33ms);
}

TEST(QtRunLoop, AnIntervalOfNothingLeavesRoomForOthers) {
    QtRunLoop loop;
    const std::unique_ptr<Timer> timer = loop.makeTimer();
    int calls = 0;
    timer->startRepeating(0ns, [&] { ++calls; });
    bool wasReached = false;
    loop.runLater([&] { wasReached = true; });
    EXPECT_TRUE(loop.runUntil([&] { return calls >= 3 && wasReached; }, 60s));
}

TEST(QtRunLoop, AnActionWithALoopOfItsOwnDoesntHoldUpThoseBehindIt) {
    QtRunLoop loop;
    Calls calls;
    loop.runLater([&] {
        calls.emplace_back("dialog opens");
        loop.runUntil([&] { return calls.size() == 3; }, 60s);
        calls.emplace_back("dialog closes");
    });
    loop.runLater([&] { calls.emplace_back("behind"); });
    loop.runLater([&] { calls.emplace_back("last"); });
    EXPECT_TRUE(loop.runUntil([&] { return calls.size() == 4; }, 60s));
    EXPECT_EQ(calls, (Calls{"dialog opens", "behind", "last", "dialog closes"}));
}

TEST(QtRunLoop, ARepeatingTimerGoesOnInsideALoopInItsOwnCall) {
    QtRunLoop loop;
    const std::unique_ptr<Timer> timer = loop.makeTimer();
    int calls = 0;
    timer->startRepeating(1ms, [&] {
        if (++calls == 1) {
            EXPECT_TRUE(loop.runUntil([&] { return calls == 3; }, 60s));
        }
    });
    EXPECT_TRUE(loop.runUntil([&] { return calls >= 4; }, 60s));
}

TEST(QtRunLoop, ASignalIsDeliveredInsideALoopInItsOwnCall) {
    QtRunLoop loop;
    int calls = 0;
    std::unique_ptr<Signal> signal;
    signal = loop.makeSignal([&] {
        if (++calls == 1) {
            signal->raise();
            EXPECT_TRUE(loop.runUntil([&] { return calls == 2; }, 60s));
        }
    });
    signal->raise();
    EXPECT_TRUE(loop.runUntil([&] { return calls == 2; }, 60s));
}

TEST(QtRunLoop, AnActionThatAlwaysComesBackLeavesRoomForTimers) {
    QtRunLoop loop;
    bool isOver = false;
    const std::function<void()> again = [&] {
        if (!isOver) {
            loop.runLater(again);
        }
    };
    again();
    const std::unique_ptr<Timer> timer = loop.makeTimer();
    timer->startOnce(1ms, [&] { isOver = true; });
    EXPECT_TRUE(loop.runUntil([&] { return isOver; }, 60s));
}

TEST(QtRunLoop, TakesManyRaisesFromManyThreads) {
    QtRunLoop loop;
    int calls = 0;
    const std::unique_ptr<Signal> signal = loop.makeSignal([&] { ++calls; });
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            for (int count = 0; count < 1000; ++count) {
                signal->raise();
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_TRUE(loop.runUntil([&] { return calls == 1; }, 60s));
}

TEST(QtRunLoop, LoopsMayFollowEachOther) {
    for (int i = 0; i < 3; ++i) {
        QtRunLoop loop;
        bool wasCalled = false;
        loop.runLater([&] { wasCalled = true; });
        EXPECT_TRUE(loop.runUntil([&] { return wasCalled; }, 60s));
    }
}

} // namespace
} // namespace deckmate
