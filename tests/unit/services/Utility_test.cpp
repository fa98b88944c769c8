#include "services/Utility.h"

#include "support/MemoryUserDefaults.h"

#include <chrono>
#include <gtest/gtest.h>
#include <optional>
#include <string>

namespace deckmate {
namespace {

using std::chrono::steady_clock;
using test::MemoryUserDefaults;

TEST(Utility, AFreshUserHasNoLastFolder) {
    const MemoryUserDefaults defaults;
    EXPECT_EQ(Utility::getStringValue("UD_LAST_OPEN_FOLDER"), std::nullopt);
}

TEST(Utility, AStoredValueComesBack) {
    const MemoryUserDefaults defaults;
    Utility::store("UD_LAST_OPEN_FOLDER", "/home/ann/Takes");
    EXPECT_EQ(Utility::getStringValue("UD_LAST_OPEN_FOLDER"), "/home/ann/Takes");
    EXPECT_EQ(defaults.stringForKey("UD_LAST_OPEN_FOLDER"), "/home/ann/Takes");
}

TEST(Utility, AnEmptyValueIsAValue) {
    const MemoryUserDefaults defaults;
    Utility::store("UD_LAST_OPEN_FOLDER", "");
    EXPECT_EQ(Utility::getStringValue("UD_LAST_OPEN_FOLDER"), "");
}

TEST(Utility, AValueReplacesTheEarlierOne) {
    const MemoryUserDefaults defaults;
    Utility::store("UD_DO_NOT_SHOW_AGAIN", "1.0.1");
    Utility::store("UD_DO_NOT_SHOW_AGAIN", "1.0.2");
    EXPECT_EQ(Utility::getStringValue("UD_DO_NOT_SHOW_AGAIN"), "1.0.2");
}

TEST(Utility, KeysDontMix) {
    const MemoryUserDefaults defaults;
    Utility::store("UD_DO_NOT_SHOW_AGAIN", "1.0.1");
    EXPECT_EQ(Utility::getStringValue("UD_LAST_OPEN_FOLDER"), std::nullopt);
}

TEST(Utility, AnEarlierVersionComesBackAsItWas) {
    const MemoryUserDefaults defaults;
    Utility::store("UD_DO_NOT_SHOW_AGAIN", "1.0.1");
    EXPECT_NE(Utility::getStringValue("UD_DO_NOT_SHOW_AGAIN"), "1.0.2");
    EXPECT_EQ(Utility::getStringValue("UD_DO_NOT_SHOW_AGAIN"), "1.0.1");
}

TEST(Utility, TheStopWatchStartsNow) {
    const steady_clock::time_point before = steady_clock::now();
    Utility::stopWatch_start();
    const steady_clock::time_point after = steady_clock::now();
    ASSERT_TRUE(Utility::S_StopWatch_start.has_value());
    EXPECT_LE(before, *Utility::S_StopWatch_start);
    EXPECT_GE(after, *Utility::S_StopWatch_start);
}

TEST(Utility, TheStopWatchGivesSeconds) {
    const steady_clock::time_point before = steady_clock::now();
    Utility::S_StopWatch_start = before - std::chrono::milliseconds(2500);
    const double seconds = Utility::stopWatch_stop();
    const std::chrono::duration<double> passed = steady_clock::now() - before;
    EXPECT_GE(seconds, 2.5);
    EXPECT_LE(seconds, 2.5 + passed.count() + 1e-6);
}

TEST(Utility, TheStopWatchRunsOn) {
    Utility::stopWatch_start();
    const auto start = Utility::S_StopWatch_start;
    const double first = Utility::stopWatch_stop();
    const double second = Utility::stopWatch_stop();
    EXPECT_LE(first, second);
    EXPECT_EQ(Utility::S_StopWatch_start, start);
}

TEST(Utility, AStopWatchThatWasNeverStartedGivesZero) {
    Utility::S_StopWatch_start = std::nullopt;
    EXPECT_EQ(Utility::stopWatch_stop(), 0.0);
}

} // namespace
} // namespace deckmate
