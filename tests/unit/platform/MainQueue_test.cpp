#include "platform/MainQueue.h"

#include <atomic>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace deckmate {
namespace {

using Calls = std::vector<std::string>;

class MainQueueTest : public testing::Test {
protected:
    MainQueue::Action noting(const std::string& label) {
        return [this, label] { calls_.push_back(label); };
    }
    void runAll() {
        while (queue_.runOne()) {
        }
    }
    /// Until another thread waits for an action.
    void awaitWaiter() {
        while (!queue_.isAwaited()) {
            std::this_thread::yield();
        }
    }

    std::atomic<int> wakes_ = 0;
    Calls calls_;
    MainQueue queue_{[this] { ++wakes_; }};
};

TEST_F(MainQueueTest, RunsNothingWhenEmpty) {
    EXPECT_FALSE(queue_.runOne());
}

TEST_F(MainQueueTest, RunsOneActionAtATimeInTheirOrder) {
    queue_.add(noting("first"));
    queue_.add(noting("second"));
    EXPECT_TRUE(queue_.runOne());
    EXPECT_EQ(calls_, Calls{"first"});
    EXPECT_TRUE(queue_.runOne());
    EXPECT_EQ(calls_, (Calls{"first", "second"}));
    EXPECT_FALSE(queue_.runOne());
}

TEST_F(MainQueueTest, WakesOnceForEachAction) {
    queue_.add(noting("first"));
    queue_.add(noting("second"));
    EXPECT_EQ(wakes_, 2);
    runAll();
    EXPECT_EQ(wakes_, 2);
}

TEST_F(MainQueueTest, AnActionMayRunTheOneBehindIt) {
    queue_.add([this] {
        calls_.emplace_back("begin");
        queue_.runOne();
        calls_.emplace_back("end");
    });
    queue_.add(noting("inner"));
    runAll();
    EXPECT_EQ(calls_, (Calls{"begin", "inner", "end"}));
}

TEST_F(MainQueueTest, AnActionIsDestroyedBeforeTheNextRuns) {
    auto held = std::make_shared<int>(0);
    const std::weak_ptr<int> watched = held;
    queue_.add([held] {});
    held = nullptr;
    queue_.add([&] { calls_.emplace_back(watched.expired() ? "gone" : "there"); });
    runAll();
    EXPECT_EQ(calls_, Calls{"gone"});
}

TEST_F(MainQueueTest, AWaiterGoesOnWhenItsActionHasRunAndIsDestroyed) {
    std::weak_ptr<int> watched;
    bool wasDestroyed = false;
    bool hasRun = false;
    std::thread waiter([&] {
        auto held = std::make_shared<int>(0);
        watched = held;
        queue_.addAndWait([&hasRun, held = std::move(held)] { hasRun = true; });
        wasDestroyed = watched.expired();
    });
    awaitWaiter();
    EXPECT_TRUE(queue_.runOne());
    waiter.join();
    EXPECT_TRUE(hasRun);
    EXPECT_TRUE(wasDestroyed);
}

TEST_F(MainQueueTest, AWaiterIsServedInItsTurn) {
    queue_.add(noting("before"));
    std::thread waiter([this] { queue_.addAndWait(noting("awaited")); });
    awaitWaiter();
    queue_.add(noting("behind"));
    runAll();
    waiter.join();
    EXPECT_EQ(calls_, (Calls{"before", "awaited", "behind"}));
}

TEST_F(MainQueueTest, OnlyAnAwaitedActionIsAwaited) {
    queue_.add(noting("not awaited"));
    EXPECT_FALSE(queue_.isAwaited());
}

TEST_F(MainQueueTest, ClosingDropsWhatHasNotBegun) {
    auto held = std::make_shared<int>(0);
    const std::weak_ptr<int> watched = held;
    queue_.add([held] {});
    held = nullptr;
    queue_.close();
    EXPECT_TRUE(watched.expired());
    EXPECT_FALSE(queue_.runOne());
}

TEST_F(MainQueueTest, ClosingLetsAWaiterGoWithoutItsAction) {
    std::thread waiter([this] { queue_.addAndWait(noting("awaited")); });
    awaitWaiter();
    queue_.close();
    waiter.join();
    EXPECT_EQ(calls_, Calls{});
}

TEST_F(MainQueueTest, AWaiterMayOutliveTheQueue) {
    auto queue = std::make_unique<MainQueue>([] {});
    MainQueue* const used = queue.get();
    std::thread waiter([used] { used->addAndWait([] {}); });
    while (!queue->isAwaited()) {
        std::this_thread::yield();
    }
    queue = nullptr;
    waiter.join();
}

TEST_F(MainQueueTest, TakesNothingAfterClosing) {
    queue_.close();
    queue_.add(noting("late"));
    queue_.addAndWait(noting("late and awaited"));
    EXPECT_FALSE(queue_.runOne());
    EXPECT_EQ(wakes_, 0);
}

TEST_F(MainQueueTest, WhatADroppedActionHeldMayComeBackWhenItGoes) {
    struct Adder {
        explicit Adder(MainQueue& adder) : queue(adder) {}
        ~Adder() {
            queue.add([] {});
        }
        Adder(const Adder&) = delete;
        Adder& operator=(const Adder&) = delete;
        Adder(Adder&&) = delete;
        Adder& operator=(Adder&&) = delete;
        MainQueue& queue;
    };
    queue_.add([held = std::make_shared<Adder>(queue_)] {});
    queue_.close();
    EXPECT_FALSE(queue_.runOne());
}

TEST_F(MainQueueTest, LosesNothingOfSeveralThreads) {
    int sum = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            for (int count = 0; count < 500; ++count) {
                queue_.add([&sum] { ++sum; });
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    runAll();
    EXPECT_EQ(sum, 4 * 500);
}

} // namespace
} // namespace deckmate
