#include "platform/BackgroundThreads.h"

#include <atomic>
#include <gtest/gtest.h>
#include <latch>
#include <memory>
#include <mutex>
#include <set>
#include <thread>

namespace deckmate {
namespace {

TEST(BackgroundThreads, WorksOnAnotherThread) {
    std::thread::id worker;
    {
        BackgroundThreads threads;
        threads.run([&] { worker = std::this_thread::get_id(); });
    }
    EXPECT_NE(worker, std::thread::id());
    EXPECT_NE(worker, std::this_thread::get_id());
}

TEST(BackgroundThreads, WorksAtTheSameTime) {
    std::latch all(BackgroundThreads::mostThreads);
    BackgroundThreads threads;
    for (std::size_t i = 0; i < BackgroundThreads::mostThreads; ++i) {
        threads.run([&] { all.arrive_and_wait(); });
    }
    all.wait();
}

TEST(BackgroundThreads, WorkBeyondTheMostThreadsWaitsForItsTurn) {
    std::atomic<int> done = 0;
    std::latch mayGoOn(1);
    {
        BackgroundThreads threads;
        for (int i = 0; i < 100; ++i) {
            threads.run([&] {
                mayGoOn.wait();
                ++done;
            });
        }
        mayGoOn.count_down();
    }
    EXPECT_EQ(done, 100);
}

TEST(BackgroundThreads, UsesNoMoreThanTheMostThreads) {
    std::mutex lock;
    std::set<std::thread::id> workers;
    {
        BackgroundThreads threads;
        for (int i = 0; i < 200; ++i) {
            threads.run([&] {
                const std::lock_guard guard(lock);
                workers.insert(std::this_thread::get_id());
            });
        }
    }
    EXPECT_LE(workers.size(), BackgroundThreads::mostThreads);
}

TEST(BackgroundThreads, TheEndWaitsForWorkThatWorkGave) {
    bool isDone = false;
    {
        BackgroundThreads threads;
        threads.run([&] { threads.run([&] { isDone = true; }); });
    }
    EXPECT_TRUE(isDone);
}

TEST(BackgroundThreads, TakesWorkAfterItHasFinished) {
    bool isDone = false;
    {
        BackgroundThreads threads;
        threads.finish();
        threads.run([&] { isDone = true; });
    }
    EXPECT_TRUE(isDone);
}

TEST(BackgroundThreads, WorkIsDestroyedWhenDone) {
    auto held = std::make_shared<int>(0);
    const std::weak_ptr<int> watched = held;
    BackgroundThreads threads;
    threads.run([held] {});
    held = nullptr;
    threads.finish();
    EXPECT_TRUE(watched.expired());
}

} // namespace
} // namespace deckmate
