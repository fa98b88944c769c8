#include "h8-device/DeviceLink.h"

#include "support/DeviceMessages.h"
#include "support/InProcessMidi.h"
#include "support/ManualRunLoop.h"

#include <chrono>
#include <cstddef>
#include <gtest/gtest.h>

namespace deckmate::tools {
namespace {

using namespace std::chrono_literals;
using test::InProcessDevice;
namespace reply = test::reply;

/// The parameter: whether the MIDI system has event lists.
class DeviceLinkTest : public testing::TestWithParam<bool> {
protected:
    DeviceLinkTest() : midi(GetParam()) {
        testing::internal::CaptureStdout(); // where what is received is logged
    }
    ~DeviceLinkTest() override { testing::internal::GetCapturedStdout(); }
    DeviceLinkTest(const DeviceLinkTest&) = delete;
    DeviceLinkTest& operator=(const DeviceLinkTest&) = delete;
    DeviceLinkTest(DeviceLinkTest&&) = delete;
    DeviceLinkTest& operator=(DeviceLinkTest&&) = delete;

    /// The recorder is there when the link looks for it, and is asked as soon as it has settled.
    void settle() {
        loop.runPending();
        loop.advance(1s);
    }
    void answerAll() {
        for (std::size_t i = 0; i < 7; ++i) {
            device.answer(reply::all()[i]);
        }
    }
    void unplug() {
        midi.removeDevice(device);
        loop.runPending();
    }

    test::ManualRunLoop loop;
    test::InProcessMidi midi;
    InProcessDevice& device = midi.addDevice("H8 ORLO MIDI 1");
    int changes = 0;
    DeviceLink link{[this] { ++changes; }};
};

INSTANTIATE_TEST_SUITE_P(Paths, DeviceLinkTest, testing::Bool(),
                         [](const auto& path) { return path.param ? "Events" : "Bytes"; });

TEST_P(DeviceLinkTest, BeforeItIsAskedARecorderIsThereAndNoMore) {
    EXPECT_TRUE(DeviceLink::isThere());
    EXPECT_FALSE(link.isKnown());
    EXPECT_FALSE(link.isSilent());
}

TEST_P(DeviceLinkTest, WhileItMayStillAnswerItIsNeitherKnownNorSilent) {
    settle();
    loop.advance(2s - 1ns);
    EXPECT_FALSE(link.isKnown());
    EXPECT_FALSE(link.isSilent());
    loop.advance(1ns);
    EXPECT_TRUE(link.isSilent());
}

TEST_P(DeviceLinkTest, ReportsOfASilentRecorderAreNoAnswers) {
    settle();
    loop.advance(2s);
    device.answer(reply::cardState);
    EXPECT_FALSE(link.isKnown());
    EXPECT_TRUE(link.isSilent());
    // The first one has ended the waiting; the second one is listened to.
    device.answer(reply::cardState);
    EXPECT_EQ(changes, 1);
    EXPECT_FALSE(link.isKnown());
    EXPECT_TRUE(link.isSilent());
}

TEST_P(DeviceLinkTest, ItIsKnownWithTheLastAnswer) {
    settle();
    for (std::size_t i = 0; i < 7; ++i) {
        EXPECT_FALSE(link.isKnown()) << i;
        device.answer(reply::all()[i]);
    }
    EXPECT_TRUE(link.isKnown());
    EXPECT_FALSE(link.isSilent());
    EXPECT_EQ(changes, 1);
}

TEST_P(DeviceLinkTest, ReportsLeaveAKnownRecorderKnown) {
    settle();
    answerAll();
    device.answer(reply::cardState);
    EXPECT_TRUE(link.isKnown());
    EXPECT_EQ(changes, 2);
}

TEST_P(DeviceLinkTest, UnpluggedAKnownRecorderIsNeither) {
    settle();
    answerAll();
    unplug();
    EXPECT_FALSE(DeviceLink::isThere());
    EXPECT_FALSE(link.isKnown());
    EXPECT_FALSE(link.isSilent());
    EXPECT_EQ(changes, 2);
}

TEST_P(DeviceLinkTest, UnpluggedASilentRecorderIsNeither) {
    settle();
    loop.advance(2s);
    unplug();
    EXPECT_FALSE(link.isKnown());
    EXPECT_FALSE(link.isSilent());
    EXPECT_EQ(changes, 1);
}

} // namespace
} // namespace deckmate::tools
