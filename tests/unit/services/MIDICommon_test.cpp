#include "services/MIDICommon.h"

#include "support/ManualRunLoop.h"

#include <gtest/gtest.h>
#include <thread>

namespace deckmate {
namespace {

using test::ManualRunLoop;

TEST(MIDICommon, OnTheMainThreadTheBlockRunsAtOnce) {
    const ManualRunLoop loop;
    bool hasRun = false;
    MIDICommon::runOnUIThread([&] { hasRun = true; });
    EXPECT_TRUE(hasRun);
}

TEST(MIDICommon, OnTheMainThreadNothingIsQueued) {
    ManualRunLoop loop;
    int calls = 0;
    MIDICommon::runOnUIThread([&] { ++calls; });
    loop.runPending();
    EXPECT_EQ(calls, 1);
}

TEST(MIDICommon, BlocksOnTheMainThreadMayBeNested) {
    const ManualRunLoop loop;
    bool hasRun = false;
    MIDICommon::runOnUIThread([&] { MIDICommon::runOnUIThread([&] { hasRun = true; }); });
    EXPECT_TRUE(hasRun);
}

TEST(MIDICommon, FromAnotherThreadTheBlockRunsOnTheMainOneBeforeTheCallReturns) {
    ManualRunLoop loop;
    std::thread::id ranOn;
    bool hadRunOnReturn = false;
    loop.runInBackground([&] {
        MIDICommon::runOnUIThread([&] { ranOn = std::this_thread::get_id(); });
        hadRunOnReturn = ranOn != std::thread::id();
    });
    loop.runBackgroundWork();
    EXPECT_EQ(ranOn, std::this_thread::get_id());
    EXPECT_TRUE(hadRunOnReturn);
}

TEST(MIDICommon, BackgroundWorkIsGivenAwayAndRunsOnAnotherThread) {
    ManualRunLoop loop;
    std::thread::id ranOn;
    MIDICommon::runBackground([&] { ranOn = std::this_thread::get_id(); });
    EXPECT_EQ(ranOn, std::thread::id());
    loop.runBackgroundWork();
    EXPECT_NE(ranOn, std::thread::id());
    EXPECT_NE(ranOn, std::this_thread::get_id());
}

} // namespace
} // namespace deckmate
