#include "platform/TerminationHold.h"

#include <atomic>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <gtest/gtest.h>
#include <optional>
#include <unistd.h>

namespace deckmate {
namespace {

std::atomic<int> ends = 0;

/// Counts the requests to end that come through, for as long as it exists.
class TerminationHoldTest : public testing::TestWithParam<int> {
protected:
    TerminationHoldTest() : before_(std::signal(GetParam(), [](int /*number*/) { ++ends; })) {
        ends = 0;
    }
    ~TerminationHoldTest() override { std::signal(GetParam(), before_); }
    TerminationHoldTest(const TerminationHoldTest&) = delete;
    TerminationHoldTest& operator=(const TerminationHoldTest&) = delete;
    TerminationHoldTest(TerminationHoldTest&&) = delete;
    TerminationHoldTest& operator=(TerminationHoldTest&&) = delete;

private:
    void (*before_)(int);
};

using TerminationHoldDeathTest = TerminationHoldTest;

TEST_P(TerminationHoldTest, ASignalWaitsForTheEndOfTheWork) {
    {
        const TerminationHold hold;
        std::raise(GetParam());
        EXPECT_EQ(ends, 0);
    }
    EXPECT_EQ(ends, 1);
}

TEST_P(TerminationHoldTest, OneToTheWholeProcessWaitsToo) {
    {
        const TerminationHold hold;
        kill(getpid(), GetParam());
        EXPECT_EQ(ends, 0);
    }
    EXPECT_EQ(ends, 1);
}

TEST_P(TerminationHoldTest, NothingIsSentThatHasNotCome) {
    { const TerminationHold hold; }
    EXPECT_EQ(ends, 0);
}

TEST_P(TerminationHoldTest, SeveralAreOne) {
    {
        const TerminationHold hold;
        std::raise(GetParam());
        std::raise(GetParam());
    }
    EXPECT_EQ(ends, 1);
}

TEST_P(TerminationHoldTest, AfterwardsASignalComesAtOnce) {
    { const TerminationHold hold; }
    std::raise(GetParam());
    EXPECT_EQ(ends, 1);
}

TEST_P(TerminationHoldTest, TheOuterOfTwoHoldsOnToTheEnd) {
    {
        const TerminationHold outer;
        {
            const TerminationHold inner;
            std::raise(GetParam());
        }
        EXPECT_EQ(ends, 0);
    }
    EXPECT_EQ(ends, 1);
}

TEST_P(TerminationHoldTest, AnIgnoredSignalStaysIgnored) {
    void (*const counting)(int) = std::signal(GetParam(), SIG_IGN);
    {
        const TerminationHold hold;
        std::raise(GetParam());
    }
    std::signal(GetParam(), counting);
    EXPECT_EQ(ends, 0);
}

TEST_P(TerminationHoldDeathTest, TheProgramEndsOfItAfterTheWork) {
    EXPECT_EXIT(
        {
            std::signal(GetParam(), SIG_DFL);
            std::optional<TerminationHold> hold(std::in_place);
            std::raise(GetParam());
            std::fputs("finished", stderr);
            hold.reset();
            std::fputs("survived", stderr);
        },
        testing::KilledBySignal(GetParam()), "finished$");
}

INSTANTIATE_TEST_SUITE_P(EachSignal, TerminationHoldTest, testing::Values(SIGHUP, SIGINT, SIGTERM));
INSTANTIATE_TEST_SUITE_P(EachSignal, TerminationHoldDeathTest,
                         testing::Values(SIGHUP, SIGINT, SIGTERM));

} // namespace
} // namespace deckmate
