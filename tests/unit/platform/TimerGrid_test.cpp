#include "platform/TimerGrid.h"

#include <chrono>
#include <gtest/gtest.h>

namespace deckmate {
namespace {

using namespace std::chrono_literals;

constexpr TimerClock::time_point start{1000s};

TEST(TimerGrid, AWaitCountsFromNow) {
    EXPECT_EQ(dueAfter(start, 5ns), start + 5ns);
}

TEST(TimerGrid, ANegativeWaitIsNone) {
    EXPECT_EQ(dueAfter(start, -1ns), start);
}

TEST(TimerGrid, AWaitBeyondTheClockEndsWithIt) {
    EXPECT_EQ(dueAfter(start, std::chrono::nanoseconds::max()), TimerClock::time_point::max());
}

TEST(TimerGrid, APunctualCallIsFollowedOneIntervalLater) {
    EXPECT_EQ(dueNext(start, 10ms, start), start + 10ms);
}

TEST(TimerGrid, ALateCallDoesntShiftTheNext) {
    EXPECT_EQ(dueNext(start, 10ms, start + 9ms), start + 10ms);
}

TEST(TimerGrid, MissedCallsAreLeftOut) {
    EXPECT_EQ(dueNext(start, 10ms, start + 35ms), start + 40ms);
}

TEST(TimerGrid, ACallThatIsDueJustNowCountsAsMissed) {
    EXPECT_EQ(dueNext(start, 10ms, start + 30ms), start + 40ms);
}

TEST(TimerGrid, AThirtiethOfASecondKeepsItsRate) {
    constexpr std::chrono::nanoseconds thirtieth{33'333'333};
    TimerClock::time_point due = start;
    for (int call = 0; call < 30; ++call) {
        due = dueNext(due, thirtieth, due + 700us);
    }
    EXPECT_EQ(due, start + 999'999'990ns);
}

} // namespace
} // namespace deckmate
