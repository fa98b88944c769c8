#include "controls/ClickCounter.h"

#include <gtest/gtest.h>

namespace deckmate::test {

namespace {

constexpr std::uint64_t interval = 400;
constexpr double distance = 5;

TEST(ClickCounter, QuickPressesInOnePlaceAreCounted) {
    ClickCounter clicks;
    EXPECT_EQ(clicks.press(1000, {10, 10}, interval, distance), 1);
    EXPECT_EQ(clicks.press(1399, {15, 5}, interval, distance), 2);
    EXPECT_EQ(clicks.press(1700, {15, 5}, interval, distance), 3);
    EXPECT_EQ(clicks.count(), 3);
}

TEST(ClickCounter, APressAfterTheIntervalIsTheFirstOfARow) {
    ClickCounter clicks;
    clicks.press(1000, {10, 10}, interval, distance);
    EXPECT_EQ(clicks.press(1400, {10, 10}, interval, distance), 1);
}

TEST(ClickCounter, APressElsewhereIsTheFirstOfARow) {
    ClickCounter clicks;
    clicks.press(1000, {10, 10}, interval, distance);
    EXPECT_EQ(clicks.press(1001, {15.5, 10}, interval, distance), 1);
    EXPECT_EQ(clicks.press(1002, {15.5, 4}, interval, distance), 1);
}

TEST(ClickCounter, AClockThatWentBackBeginsARow) {
    ClickCounter clicks;
    clicks.press(1000, {10, 10}, interval, distance);
    EXPECT_EQ(clicks.press(999, {10, 10}, interval, distance), 1);
}

TEST(ClickCounter, NoPressIsNoClick) {
    EXPECT_EQ(ClickCounter().count(), 0);
    EXPECT_EQ(ClickCounter().press(0, {0, 0}, interval, distance), 1);
}

} // namespace

} // namespace deckmate::test
