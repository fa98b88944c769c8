// The fake's own promises; those that it shares with the real loop are asked by tests/contract.
#include "support/ManualRunLoop.h"

#include <chrono>
#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace deckmate {
namespace {

using namespace std::chrono_literals;
using test::ManualRunLoop;
using Calls = std::vector<std::string>;

class ManualRunLoopTest : public testing::Test {
protected:
    std::function<void()> noting(const std::string& label) {
        return [this, label] { calls_.push_back(label + "@" + std::to_string(loop_.now() / 1ms)); };
    }

    Calls calls_; // work that is left is done when the loop goes
    ManualRunLoop loop_;
};

TEST_F(ManualRunLoopTest, NothingHappensByItself) {
    const auto timer = loop_.makeTimer();
    timer->startOnce(0ns, noting("timer"));
    loop_.runLater(noting("later"));
    loop_.runInBackground(noting("background"));
    EXPECT_EQ(calls_, Calls{});
}

TEST_F(ManualRunLoopTest, ATimerFiresExactlyAtItsTime) {
    const auto timer = loop_.makeTimer();
    timer->startOnce(2s, noting("timer"));
    loop_.advance(2s - 1ns);
    EXPECT_EQ(calls_, Calls{});
    EXPECT_EQ(loop_.untilNextTimer(), 1ns);
    loop_.advance(1ns);
    EXPECT_EQ(calls_, Calls{"timer@2000"});
    EXPECT_EQ(loop_.untilNextTimer(), std::nullopt);
}

TEST_F(ManualRunLoopTest, TimersFireInOrderOfTimeThenOfStart) {
    const auto third = loop_.makeTimer();
    const auto second = loop_.makeTimer();
    const auto first = loop_.makeTimer();
    second->startOnce(20ms, noting("second"));
    third->startOnce(20ms, noting("third"));
    first->startOnce(10ms, noting("first"));
    loop_.advance(1s);
    EXPECT_EQ(calls_, (Calls{"first@10", "second@20", "third@20"}));
}

TEST_F(ManualRunLoopTest, ARepeatingTimerFiresOncePerInterval) {
    const auto timer = loop_.makeTimer();
    timer->startRepeating(200ms, noting("timer"));
    loop_.advance(650ms);
    EXPECT_EQ(calls_, (Calls{"timer@200", "timer@400", "timer@600"}));
}

TEST_F(ManualRunLoopTest, CallsMissedWhileBusyAreLeftOut) {
    const auto timer = loop_.makeTimer();
    timer->startRepeating(100ms, noting("timer"));
    loop_.beBusyFor(350ms);
    EXPECT_EQ(calls_, Calls{});
    loop_.advance(0ns);
    EXPECT_EQ(calls_, Calls{"timer@350"});
    loop_.advance(50ms);
    EXPECT_EQ(calls_, (Calls{"timer@350", "timer@400"}));
}

TEST_F(ManualRunLoopTest, ATimerStartedWhileAdvancingCountsFromThen) {
    const auto first = loop_.makeTimer();
    const auto second = loop_.makeTimer();
    first->startOnce(10ms,
                     [&] { loop_.runLater([&] { second->startOnce(10ms, noting("second")); }); });
    loop_.advance(20ms);
    EXPECT_EQ(calls_, Calls{"second@20"});
}

TEST_F(ManualRunLoopTest, PendingRunsUntilNothingIsLeft) {
    loop_.runLater([this] { loop_.runLater(noting("inner")); });
    loop_.runPending();
    EXPECT_EQ(calls_, Calls{"inner@0"});
}

TEST_F(ManualRunLoopTest, CountsActiveTimers) {
    const auto one = loop_.makeTimer();
    const auto other = loop_.makeTimer();
    one->startOnce(1s, [] {});
    EXPECT_EQ(loop_.activeTimers(), 1U);
}

TEST_F(ManualRunLoopTest, BackgroundWorkIsDoneInItsOrder) {
    loop_.runInBackground(noting("first"));
    loop_.runInBackground(noting("second"));
    loop_.runBackgroundWork();
    EXPECT_EQ(calls_, (Calls{"first@0", "second@0"}));
}

using ManualRunLoopDeathTest = ManualRunLoopTest;

TEST_F(ManualRunLoopDeathTest, AnIntervalOfNothingIsMisuse) {
    const auto timer = loop_.makeTimer();
    EXPECT_DEATH(timer->startRepeating(0ns, [] {}), "an interval that isn't positive");
}

TEST_F(ManualRunLoopDeathTest, ATimerOnAnotherThreadIsMisuse) {
    const auto timer = loop_.makeTimer();
    EXPECT_DEATH(std::thread([&] { timer->startOnce(1s, [] {}); }).join(),
                 "timer started on another thread");
}

TEST_F(ManualRunLoopDeathTest, ASignalThatOutlivesTheLoopIsMisuse) {
    EXPECT_DEATH(
        {
            auto signal = loop_.makeSignal([] {});
            loop_.~ManualRunLoop();
        },
        "destroyed before its timers, signals and watches");
}

TEST_F(ManualRunLoopDeathTest, TwoWatchesOfOneDescriptorAreMisuse) {
    const auto watch = loop_.watchReadable(0, [] {});
    EXPECT_DEATH(loop_.watchReadable(0, [] {}), "two watches of one descriptor");
}

TEST_F(ManualRunLoopDeathTest, QueuedWorkThatNeverEndsIsMisuse) {
    std::function<void()> again = [&] { loop_.runLater(again); };
    again();
    EXPECT_DEATH(loop_.runPending(), "queued work never ends");
}

} // namespace
} // namespace deckmate
