#include "platform/TaskThread.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <latch>
#include <numeric>
#include <thread>
#include <vector>

namespace deckmate {
namespace {

TEST(TaskThread, RunsAllTasksInOrderBeforeItGoes) {
    std::vector<int> order;
    {
        TaskThread tasks;
        for (int i = 0; i < 100; ++i) {
            tasks.run([&order, i] { order.push_back(i); });
        }
    }
    std::vector<int> expected(100);
    std::iota(expected.begin(), expected.end(), 0);
    EXPECT_EQ(order, expected);
}

TEST(TaskThread, RunsThemOnAThreadOfItsOwn) {
    std::thread::id ran;
    {
        TaskThread tasks;
        tasks.run([&ran] { ran = std::this_thread::get_id(); });
    }
    EXPECT_NE(ran, std::thread::id());
    EXPECT_NE(ran, std::this_thread::get_id());
}

// A sound server that never answers must not keep the program from ending.
TEST(TaskThread, ATaskThatHangsIsLeftBehind) {
    struct Gates {
        std::latch canGoOn{1};
        std::latch hasGoneOn{1};
        bool hasRunNext = false;
    };
    const auto gates = std::make_shared<Gates>();
    {
        TaskThread tasks;
        tasks.run([gates] {
            gates->canGoOn.wait();
            gates->hasGoneOn.count_down();
        });
        tasks.run([gates] { gates->hasRunNext = true; });
    }
    gates->canGoOn.count_down();
    gates->hasGoneOn.wait();
    EXPECT_FALSE(gates->hasRunNext);
}

} // namespace
} // namespace deckmate
