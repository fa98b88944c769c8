#include "h8-simulator/Simulator.h"

#include "support/ManualRunLoop.h"

#include <chrono>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace deckmate::tools {
namespace {

using namespace std::chrono_literals;
using test::ManualRunLoop;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

const Bytes startRequest = {0xF0, 0x52, 0x00, 0x00, 0x52, 0xF7};
const Bytes startDone = {0xF0, 0x52, 0x00, 0x00, 0x00, 0x15, 0xF7};
const Bytes batteryRequest = {0xF0, 0x52, 0x00, 0x00, 0x46, 0x01, 0xF7};
const Bytes battery = {0xF0, 0x52, 0x00, 0x00, 0x45, 0x01, 0x00, 0xF7};

class SimulatorTest : public testing::Test {
protected:
    void advance(std::chrono::milliseconds time) {
        loop.advance(time);
        lines.clear();
    }

    ManualRunLoop loop;
    bool canSend = true;
    std::vector<Bytes> sent;
    std::vector<std::string> lines;
    std::vector<std::string> reasons;
    Simulator simulator{loop,
                        {.send =
                             [this](ByteView bytes) {
                                 sent.emplace_back(bytes.begin(), bytes.end());
                                 return canSend;
                             },
                         .print = [this](const std::string& line) { lines.push_back(line); },
                         .time = [this] { return loop.now(); },
                         .leave = [this](const std::string& why) { reasons.push_back(why); }}};
};

TEST_F(SimulatorTest, AnswersARequestAtOnce) {
    simulator.receive(startRequest);
    EXPECT_THAT(sent, ElementsAre(startDone));
}

TEST_F(SimulatorTest, TracesBothWaysWithTimeAndMeaning) {
    advance(12'345ms);
    simulator.receive(startRequest);
    EXPECT_THAT(lines,
                ElementsAre("12.345 <- F0 52 00 00 52 F7   application start",
                            "12.345 -> F0 52 00 00 00 15 F7   application start acknowledged"));
}

TEST_F(SimulatorTest, TracesAnUnknownMessage) {
    simulator.receive(Bytes{0xF0, 0x01, 0xF7});
    EXPECT_THAT(lines, ElementsAre("0.000 <- F0 01 F7   unknown"));
}

TEST_F(SimulatorTest, TracesWhatIsNoMessage) {
    simulator.receive(Bytes{0x90, 0x3C, 0x64});
    EXPECT_THAT(lines, ElementsAre("0.000 <- 90 3C 64   no whole message"));
}

TEST_F(SimulatorTest, TracesARequestThatIsNotAnswered) {
    simulator.faults().silence(1);
    simulator.receive(startRequest);
    EXPECT_THAT(lines,
                ElementsAre("0.000 <- F0 52 00 00 52 F7   application start", "0.000 -- no reply"));
}

TEST_F(SimulatorTest, TracesWhatCouldNotBeSent) {
    canSend = false;
    simulator.receive(startRequest);
    EXPECT_EQ(lines.back(), "0.000 -- not sent");
}

TEST_F(SimulatorTest, UnknownMessagesAreNotCountedAsRequests) {
    simulator.faults().silence(1);
    simulator.receive(Bytes{0xF0, 0x01, 0xF7});
    simulator.receive(startRequest);
    EXPECT_THAT(sent, IsEmpty());
}

TEST_F(SimulatorTest, DelayedReplyLeavesAtItsTime) {
    simulator.faults().setDelay(1900ms);
    simulator.receive(startRequest);
    loop.advance(1899ms);
    EXPECT_THAT(sent, IsEmpty());
    loop.advance(1ms);
    EXPECT_THAT(sent, ElementsAre(startDone));
}

TEST_F(SimulatorTest, DelayedReplyIsTracedWhenItLeaves) {
    simulator.faults().setDelay(100ms);
    simulator.receive(startRequest);
    advance(50ms);
    EXPECT_THAT(lines, IsEmpty());
    loop.advance(50ms);
    EXPECT_THAT(lines,
                ElementsAre("0.100 -> F0 52 00 00 00 15 F7   application start acknowledged"));
}

TEST_F(SimulatorTest, RepliesOfTheSameDelayKeepTheirOrder) {
    simulator.faults().setDelay(100ms);
    simulator.receive(startRequest);
    simulator.receive(batteryRequest);
    loop.advance(100ms);
    EXPECT_THAT(sent, ElementsAre(startDone, battery));
}

TEST_F(SimulatorTest, ReplyOfAShorterDelayOvertakes) {
    simulator.faults().setDelay(100ms);
    simulator.receive(startRequest);
    simulator.faults().setDelay(0ms);
    simulator.receive(batteryRequest);
    loop.advance(100ms);
    EXPECT_THAT(sent, ElementsAre(battery, startDone));
}

TEST_F(SimulatorTest, TooManyDelayedMessagesAreDropped) {
    simulator.faults().setDelay(1s);
    for (std::size_t i = 0; i < Simulator::mostWaiting + 1; ++i) {
        simulator.receive(startRequest);
    }
    EXPECT_EQ(lines.back(), "0.000 -- dropped: too many wait");
    loop.advance(1s);
    EXPECT_THAT(sent, SizeIs(Simulator::mostWaiting));
}

TEST_F(SimulatorTest, SplitReplyLeavesInPieces) {
    simulator.faults().setPieceSize(5);
    simulator.receive(startRequest);
    EXPECT_THAT(sent, ElementsAre(Bytes{0xF0, 0x52, 0x00, 0x00, 0x00}, Bytes{0x15, 0xF7}));
}

TEST_F(SimulatorTest, SplitReplyIsTracedAsOneMessage) {
    simulator.faults().setPieceSize(5);
    simulator.receive(startRequest);
    EXPECT_EQ(lines.back(),
              "0.000 -> F0 52 00 00 00 15 F7   application start acknowledged, in 2 pieces");
}

TEST_F(SimulatorTest, MergedRepliesLeaveInOnePiece) {
    simulator.faults().setMerging(true);
    simulator.receive(startRequest);
    EXPECT_EQ(lines.back(), "0.000 -- the reply waits for the next message");
    simulator.receive(batteryRequest);
    Bytes both = startDone;
    both.insert(both.end(), battery.begin(), battery.end());
    EXPECT_THAT(sent, ElementsAre(both));
}

TEST_F(SimulatorTest, MergedRepliesAreTracedOneByOne) {
    simulator.faults().setMerging(true);
    simulator.receive(startRequest);
    lines.clear();
    simulator.receive(batteryRequest);
    EXPECT_THAT(
        lines,
        ElementsAre("0.000 <- F0 52 00 00 46 01 F7   battery type request",
                    "0.000 -> F0 52 00 00 00 15 F7   application start acknowledged",
                    "0.000 -> F0 52 00 00 45 01 00 F7   battery type: 0, with the one before"));
}

TEST_F(SimulatorTest, ReportsTheCardUnasked) {
    simulator.state().card = 0;
    simulator.report();
    ASSERT_THAT(sent, SizeIs(1));
    EXPECT_EQ(kindOf(sent[0]), Kind::cardReport);
    EXPECT_EQ(lines.back().substr(lines.back().rfind("   ") + 3), "card state: no card");
}

TEST_F(SimulatorTest, ReportsTheCardAgainAndAgain) {
    simulator.reportEvery(2s);
    loop.advance(5s);
    EXPECT_THAT(sent, SizeIs(2));
}

TEST_F(SimulatorTest, StopsReporting) {
    simulator.reportEvery(2s);
    simulator.reportEvery(0s);
    loop.advance(5s);
    EXPECT_THAT(sent, IsEmpty());
}

TEST_F(SimulatorTest, SendsBytesAsTheyAreWhateverFaultsThereAre) {
    simulator.faults().setDelay(1s);
    simulator.faults().setPieceSize(1);
    simulator.faults().silenceAll();
    simulator.sendBytes(startRequest, "bytes");
    EXPECT_THAT(sent, ElementsAre(startRequest));
}

TEST_F(SimulatorTest, GarbageIsTheSameAfterTheSameSeed) {
    simulator.seed(7);
    simulator.sendGarbage(100);
    simulator.seed(7);
    simulator.sendGarbage(100);
    ASSERT_THAT(sent, ElementsAre(SizeIs(100), SizeIs(100)));
    EXPECT_EQ(sent[0], sent[1]);
}

TEST_F(SimulatorTest, GarbageIsAnotherAfterAnotherSeed) {
    simulator.seed(7);
    simulator.sendGarbage(100);
    simulator.seed(8);
    simulator.sendGarbage(100);
    EXPECT_NE(sent[0], sent[1]);
}

TEST_F(SimulatorTest, StatusIsPrintedInTheCommandsWords) {
    simulator.state().clock = {20, 26, 3, 5, 9, 7, 2};
    simulator.state().remaining = {1, 2, 3};
    simulator.printStatus();
    EXPECT_THAT(lines,
                ElementsAre("0.000 -- id 52 00 00 00", "0.000 -- version 0100", "0.000 -- card 1",
                            "0.000 -- remaining 01:02:03", "0.000 -- used 8053063680",
                            "0.000 -- max 31997506355", "0.000 -- battery 0",
                            "0.000 -- power-off 1", "0.000 -- clock 2026-03-05 09:07:02",
                            "0.000 -- requests 0", "0.000 -- faults none"));
}

} // namespace
} // namespace deckmate::tools
