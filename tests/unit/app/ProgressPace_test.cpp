#include "app/ProgressPace.h"

#include <gtest/gtest.h>

namespace deckmate {
namespace {

using namespace std::chrono_literals;

TEST(ProgressPace, ShortWorkShowsNothing) {
    ProgressPace pace;
    EXPECT_EQ(pace.after(0ms, 0, 100), std::nullopt);
    EXPECT_EQ(pace.after(299ms, 10, 100), std::nullopt);
    EXPECT_EQ(pace.after(299ms, 100, 100), std::nullopt);
}

TEST(ProgressPace, LongWorkShowsFrom300MillisecondsOn) {
    ProgressPace pace;
    EXPECT_EQ(pace.after(300ms, 10, 100), 100);
}

TEST(ProgressPace, ShowsNothingForTheLastMoments) {
    ProgressPace pace;
    EXPECT_EQ(pace.after(300ms, 50, 100), 500); // 300 ms are left
    pace = {};
    EXPECT_EQ(pace.after(300ms, 51, 100), std::nullopt);
    EXPECT_EQ(pace.after(10s, 98, 100), std::nullopt); // some 200 ms are left
    EXPECT_EQ(pace.after(10s, 97, 100), 970);          // some 310 ms
}

TEST(ProgressPace, WorkThatStallsNearItsEndShows) {
    ProgressPace pace;
    EXPECT_EQ(pace.after(1s, 90, 100), std::nullopt);
    EXPECT_EQ(pace.after(3s, 90, 100), 900);
}

TEST(ProgressPace, MovesEvery100Milliseconds) {
    ProgressPace pace;
    pace.after(300ms, 10, 100);
    EXPECT_EQ(pace.after(399ms, 12, 100), std::nullopt);
    EXPECT_EQ(pace.after(400ms, 12, 100), 120);
    EXPECT_EQ(pace.after(499ms, 14, 100), std::nullopt);
    EXPECT_EQ(pace.after(500ms, 14, 100), 140);
}

TEST(ProgressPace, TheEndShowsAtOnce) {
    ProgressPace pace;
    pace.after(300ms, 10, 100);
    EXPECT_EQ(pace.after(301ms, 100, 100), 1000);
}

TEST(ProgressPace, WhatStandsStillIsNoNews) {
    ProgressPace pace;
    pace.after(300ms, 10, 100);
    EXPECT_EQ(pace.after(1s, 10, 100), std::nullopt);
    EXPECT_EQ(pace.after(2s, 9, 100), std::nullopt);
}

TEST(ProgressPace, NothingToDoShowsNothing) {
    ProgressPace pace;
    EXPECT_EQ(pace.after(10s, 0, 0), std::nullopt);
}

TEST(ProgressPace, CountsBeyond32Bits) {
    ProgressPace pace;
    EXPECT_EQ(pace.after(10s, 1ULL << 60, 1ULL << 62), 250);
}

} // namespace
} // namespace deckmate
