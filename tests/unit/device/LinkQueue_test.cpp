// Sequences that wait for each other while the recorder hangs, goes, or can't be reached.
#include "DeviceTest.h"

#include <tuple>

namespace deckmate::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

Bytes batteryChange(std::uint8_t value) {
    return {0xF0, 0x52, 0x00, 0x00, 0x31, 0x01, value, 0xF7};
}
Bytes autoPowOffChange(std::uint8_t value) {
    return {0xF0, 0x52, 0x00, 0x00, 0x31, 0x02, value, 0xF7};
}

class LinkQueue : public DeviceTest, public testing::WithParamInterface<bool> {
protected:
    LinkQueue() : DeviceTest(GetParam()) {}

    static void answerAll(InProcessDevice& device) {
        for (std::size_t i = 0; i < 7; ++i) {
            device.answer(reply::all()[i]);
        }
    }
    std::function<void()> note(const std::string& what) {
        return [this, what] { done.push_back(what); };
    }

    std::vector<std::string> done;
};

INSTANTIATE_TEST_SUITE_P(Paths, LinkQueue, testing::Bool(),
                         [](const auto& path) { return path.param ? "Events" : "Bytes"; });

TEST_P(LinkQueue, ASecondConnectSequenceRunsToItsEndAfterTheFirst) {
    InProcessDevice& device = connect();
    sequences().startConnectSeq(note("first"));
    sequences().startConnectSeq(note("second"));
    answerAll(device);
    EXPECT_THAT(done, ElementsAre("first"));
    EXPECT_EQ(device.messages.size(), 8U);
    EXPECT_EQ(device.messages.back(), request::identity);
    answerAll(device);
    EXPECT_THAT(done, ElementsAre("first", "second"));
    EXPECT_EQ(device.messages.size(), 14U);
    EXPECT_FALSE(sequences().isSeqRunning());
    EXPECT_THAT(sequences().queue(), IsEmpty());
}

TEST_P(LinkQueue, WhileIdleAfterwardsTheLastOneIsTold) {
    InProcessDevice& device = connect();
    sequences().startConnectSeq(note("first"));
    sequences().startConnectSeq(note("second"));
    answerAll(device);
    answerAll(device);
    done.clear();
    device.answer(reply::cardState);
    EXPECT_THAT(done, ElementsAre("second"));
}

TEST_P(LinkQueue, MoreThanTwentyMayWait) {
    InProcessDevice& device = connect();
    for (std::uint8_t value = 0; value < 50; ++value) {
        sequences().startChangeBatteryTypeSeq(value, note(std::to_string(value)));
    }
    EXPECT_EQ(sequences().queue().size(), 49U);
    for (std::uint8_t value = 0; value < 50; ++value) {
        ASSERT_EQ(device.messages.size(), value + 1U);
        EXPECT_EQ(device.messages.back(), batteryChange(value));
        device.answer(reply::batteryTypeSet);
        ASSERT_EQ(done.size(), value + 1U);
        EXPECT_EQ(done.back(), std::to_string(value));
    }
    EXPECT_THAT(sequences().queue(), IsEmpty());
    EXPECT_EQ(loop.activeTimers(), 0U);
}

TEST_P(LinkQueue, TwoQuickChangesBeforeUnpluggingEndSilently) {
    InProcessDevice& device = connect();
    sequences().startChangeBatteryTypeSeq(1, note("battery"));
    loop.advance(100ms);
    sequences().startChangeAutoPowOffSeq(2, note("power-off"));
    unplug(device);
    EXPECT_THAT(device.messages, ElementsAre(batteryChange(1)));
    loop.advance(1900ms - 1ns);
    EXPECT_TRUE(sequences().isSeqRunning());
    loop.advance(1ns);
    EXPECT_FALSE(sequences().isSeqRunning());
    loop.advance(1h);
    EXPECT_EQ(sequences().queue().size(), 1U);
    EXPECT_THAT(done, IsEmpty());
    EXPECT_THAT(user.heard, ElementsAre("found", "connected", "disconnected"));
}

TEST_P(LinkQueue, WhatWaitedWhenUnpluggedComesBeforeTheNextConnection) {
    InProcessDevice& device = connect();
    sequences().startChangeBatteryTypeSeq(1, note("battery"));
    sequences().startChangeAutoPowOffSeq(2, note("power-off"));
    unplug(device);
    loop.advance(2s);
    user.onConnected = [this] { sequences().startConnectSeq(note("connection")); };
    InProcessDevice& again = connect();
    EXPECT_THAT(again.messages, ElementsAre(autoPowOffChange(2)));
    again.answer(reply::autoPowOffSet);
    EXPECT_THAT(again.messages, ElementsAre(autoPowOffChange(2), request::identity));
    answerAll(again);
    EXPECT_THAT(done, ElementsAre("power-off", "connection"));
}

TEST_P(LinkQueue, AChangeThatCantBeSentTimesOut) {
    InProcessDevice& device = connect();
    midi.canSend = false;
    sequences().startChangeBatteryTypeSeq(1, note("lost"));
    EXPECT_TRUE(sequences().isSeqRunning());
    loop.advance(2s);
    EXPECT_FALSE(sequences().isSeqRunning());
    EXPECT_THAT(device.messages, IsEmpty());
    midi.canSend = true;
    sequences().startChangeBatteryTypeSeq(2, note("sent"));
    EXPECT_THAT(device.messages, ElementsAre(batteryChange(2)));
    device.answer(reply::batteryTypeSet);
    EXPECT_THAT(done, ElementsAre("sent"));
}

TEST_P(LinkQueue, AFirstQuestionThatCantBeSentTimesOut) {
    InProcessDevice& device = connect();
    midi.canSend = false;
    sequences().startConnectSeq(note("lost"));
    loop.advance(2s - 1ns);
    EXPECT_TRUE(sequences().isSeqRunning());
    loop.advance(1ns);
    EXPECT_FALSE(sequences().isSeqRunning());
    midi.canSend = true;
    sequences().startConnectSeq(note("sent"));
    answerAll(device);
    EXPECT_THAT(done, ElementsAre("sent"));
}

// Later questions have no time-out, so that only an answer leads on.
TEST_P(LinkQueue, ALaterQuestionThatCantBeSentIsWaitedForWithoutEnd) {
    InProcessDevice& device = connect();
    sequences().startConnectSeq(note("connection"));
    device.answer(reply::identity);
    midi.canSend = false;
    device.answer(reply::applicationStarted);
    midi.canSend = true;
    EXPECT_THAT(device.messages, ElementsAre(request::identity, request::applicationStart));
    loop.advance(1h);
    EXPECT_TRUE(sequences().isSeqRunning());
    device.answer(reply::version);
    EXPECT_EQ(device.messages.back(), request::cardState);
}

TEST_P(LinkQueue, ACommandWhoseCallbackIsNotContentComesBeforeTheOneThatItGives) {
    InProcessDevice& device = connect();
    const Bytes command = {0xF0, 0x01, 0xF7};
    const Bytes another = {0xF0, 0x02, 0xF7};
    int calls = 0;
    int callsOfAnother = 0;
    sequences().exeCommand(command, [&](std::span<const std::uint8_t>) {
        sequences().exeCommand(another, [&](std::span<const std::uint8_t>) {
            ++callsOfAnother;
            return true;
        });
        return ++calls == 2;
    });
    device.answer(reply::dateSet);
    EXPECT_EQ(calls, 1);
    device.answer(reply::dateSet);
    EXPECT_EQ(calls, 2);
    EXPECT_EQ(callsOfAnother, 0);
    device.answer(reply::dateSet);
    device.answer(reply::dateSet);
    EXPECT_EQ(calls, 2);
    EXPECT_EQ(callsOfAnother, 1);
    EXPECT_THAT(device.messages, ElementsAre(command, another, another));
}

/// Hangs with so many of the first questions answered, too late for a time-out.
class HungLink : public DeviceTest,
                 public testing::WithParamInterface<std::tuple<bool, std::size_t>> {
protected:
    HungLink() : DeviceTest(std::get<0>(GetParam())) {
        user.onConnected = [this] { sequences().startConnectSeq([this] { ++completions; }); };
    }

    const std::size_t answered = std::get<1>(GetParam());
    int completions = 0;
};

INSTANTIATE_TEST_SUITE_P(Steps, HungLink,
                         testing::Combine(testing::Bool(), testing::Range(2UL, 7UL)),
                         [](const auto& row) {
                             return (std::get<0>(row.param) ? "Events" : "Bytes") +
                                    std::to_string(std::get<1>(row.param));
                         });

// It has always been so.
TEST_P(HungLink, EachFurtherConnectionWaitsAndNothingElseGrows) {
    InProcessDevice* device = &connect();
    for (std::size_t i = 0; i < answered; ++i) {
        device->answer(reply::all()[i]);
    }
    constexpr std::size_t rounds = 30;
    for (std::size_t round = 1; round <= rounds; ++round) {
        unplug(*device);
        EXPECT_EQ(midi.ports(), 0U);
        EXPECT_EQ(midi.connections(), 0U);
        device = &connect();
        loop.advance(1h);
        EXPECT_THAT(device->messages, IsEmpty());
        EXPECT_EQ(sequences().queue().size(), round);
        EXPECT_EQ(loop.activeTimers(), 0U);
    }

    // The first takes the answers that it still lacks; each of the others asks all seven questions.
    for (std::size_t i = answered; i < 7; ++i) {
        device->answer(reply::all()[i]);
    }
    for (std::size_t round = 1; round <= rounds; ++round) {
        EXPECT_EQ(completions, static_cast<int>(round));
        EXPECT_EQ(sequences().queue().size(), rounds - round);
        EXPECT_EQ(device->messages.back(), request::identity);
        for (std::size_t i = 0; i < 7; ++i) {
            device->answer(reply::all()[i]);
        }
    }
    EXPECT_EQ(completions, static_cast<int>(rounds) + 1);
    EXPECT_EQ(device->messages.size(), 6 - answered + 7 * rounds);
    EXPECT_FALSE(sequences().isSeqRunning());
}

} // namespace
} // namespace deckmate::test
