#include "device/MIDISequenceManager.h"

#include "DeviceTest.h"

namespace deckmate::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// Notes what is done with it; completes when told.
class NotedSequence final : public MIDISequenceBase {
public:
    NotedSequence(std::vector<std::string>& notes, std::string name)
        : notes_(notes), name_(std::move(name)) {}

    void startSequence() override {
        notes_.push_back(name_ + " starts");
        isRunning = true;
    }
    void receivedMidi(std::span<const std::uint8_t> message) override {
        notes_.push_back(name_ + " gets " + std::to_string(message.size()));
        if (completesOnMessage) {
            isRunning = false;
        }
    }
    void dispose() override {
        notes_.push_back(name_ + " disposed");
        isRunning = false;
    }
    bool didCompleted() const override { return !isRunning; }

    bool isRunning = false;
    bool completesOnMessage = true;

private:
    std::vector<std::string>& notes_;
    std::string name_;
};

class MIDISequenceManagerTest : public DeviceTest {
protected:
    std::shared_ptr<NotedSequence> make(const std::string& name) {
        auto sequence = std::make_shared<NotedSequence>(notes, name);
        sequence->setOnCompleted([this, name] { notes.push_back(name + " completed"); });
        return sequence;
    }
    /// Puts a sequence in front and starts it.
    std::shared_ptr<NotedSequence> run(const std::string& name) {
        auto sequence = make(name);
        sequences().switchToNewSeq(sequence);
        sequences().checkAndRunQueue();
        return sequence;
    }
    /// A whole message of so many counted bytes.
    void receive(std::size_t length = 6) {
        Bytes message(length + 1, 0x7F);
        message.front() = 0xF0;
        message.back() = 0xF7;
        MIDIPacket packet;
        packet.length = static_cast<std::uint16_t>(message.size());
        std::copy(message.begin(), message.end(), packet.data.begin());
        sequences().receivedMidi_iOS13(packet, true);
    }
    void receive(const Bytes& message) {
        MIDIPacket packet;
        packet.length = static_cast<std::uint16_t>(message.size());
        std::copy(message.begin(), message.end(), packet.data.begin());
        sequences().receivedMidi_iOS13(packet, true);
    }

    std::vector<std::string> notes;
};

TEST_F(MIDISequenceManagerTest, BeginsIdle) {
    EXPECT_FALSE(sequences().isSeqRunning());
    EXPECT_EQ(sequences().current_seq(), MIDISequenceManager::s_NO_OP());
    EXPECT_THAT(sequences().queue(), IsEmpty());
    EXPECT_EQ(info().sdExist, 0);
    EXPECT_EQ(info().sdUsedSize, "");
}

TEST_F(MIDISequenceManagerTest, AMessageGoesToTheSequenceThenToItsCompletionThenToTheNext) {
    run("first");
    sequences().startChangeBatteryTypeSeq(1, nullptr);
    notes.clear();
    receive();
    EXPECT_THAT(notes, ElementsAre("first gets 6", "first completed"));
    EXPECT_TRUE(sequences().isSeqRunning()); // the change of the battery type
    EXPECT_THAT(sequences().queue(), IsEmpty());
}

TEST_F(MIDISequenceManagerTest, WhatWaitsIsNotCompleted) {
    run("first")->completesOnMessage = false;
    receive();
    receive();
    EXPECT_THAT(notes, ElementsAre("first starts", "first gets 6", "first gets 6"));
}

TEST_F(MIDISequenceManagerTest, AnUnfinishedMessageGoesToNobody) {
    run("first");
    notes.clear();
    receive(Bytes{0xF0, 0x52});
    EXPECT_THAT(notes, IsEmpty());
}

TEST_F(MIDISequenceManagerTest, WithNothingWaitingItGoesBackToIdle) {
    run("first");
    receive();
    EXPECT_EQ(sequences().current_seq(), MIDISequenceManager::s_NO_OP());
    EXPECT_THAT(notes,
                ElementsAre("first starts", "first gets 6", "first completed", "first disposed"));
}

TEST_F(MIDISequenceManagerTest, PreemptionRunsTheNewOneFirstAndTheOldOneAnew) {
    const auto old = run("old");
    sequences().switchToNewSeq(make("new"));
    EXPECT_EQ(sequences().current_seq(), MIDISequenceManager::s_NO_OP());
    EXPECT_EQ(sequences().queue().size(), 2U);
    sequences().checkAndRunQueue();
    receive();
    receive();
    EXPECT_THAT(notes, ElementsAre("old starts", "new starts", "new gets 6", "new completed",
                                   "old starts", "old gets 6", "old completed", "old disposed"));
}

TEST_F(MIDISequenceManagerTest, StoppingDisposesOfAllThatRunsAndWaits) {
    run("first");
    const auto waiting = make("waiting");
    waiting->isRunning = true;
    sequences().switchToNewSeq(waiting);
    sequences().switchToNewSeq(make("done"));
    sequences().checkAndRunQueue();
    notes.clear();
    sequences().forceStopSeq();
    EXPECT_THAT(notes, ElementsAre("done disposed", "waiting disposed", "first disposed"));
    EXPECT_THAT(sequences().queue(), IsEmpty());
}

TEST_F(MIDISequenceManagerTest, StoppingLeavesAloneWhatWaitsAndIsCompleted) {
    run("first");
    sequences().switchToNewSeq(make("waiting"));
    sequences().switchToNewSeq(make("running"));
    sequences().checkAndRunQueue();
    notes.clear();
    sequences().forceStopSeq();
    EXPECT_THAT(notes, ElementsAre("running disposed", "first disposed"));
    EXPECT_THAT(sequences().queue(), IsEmpty());
}

TEST_F(MIDISequenceManagerTest, TheIdleOneGoesWithTheManager) {
    std::weak_ptr<int> held;
    {
        const auto holds = std::make_shared<int>();
        held = holds;
        connect();
        sequences().startConnectSeq([holds] {});
    }
    EXPECT_FALSE(held.expired());
    MIDISequenceManager::s_seq_controller().reset();
    EXPECT_EQ(MIDISequenceManager::s_NO_OP(), nullptr);
    EXPECT_TRUE(held.expired());
}

TEST_F(MIDISequenceManagerTest, StoppingTheIdleOneDoesNothing) {
    sequences().switchToNewSeq(make("waiting"));
    sequences().forceStopSeq();
    EXPECT_EQ(sequences().queue().size(), 1U);
    EXPECT_THAT(notes, IsEmpty());
}

TEST_F(MIDISequenceManagerTest, ATimeOutMakesRoomOnlyWhenSomethingElseHappens) {
    InProcessDevice& device = connect();
    sequences().startChangeBatteryTypeSeq(1, nullptr);
    sequences().startChangeAutoPowOffSeq(2, nullptr);
    loop.advance(10s);
    EXPECT_EQ(device.messages.size(), 1U);
    device.answer({0xF0, 1});
    EXPECT_EQ(device.messages.size(), 2U);
    loop.advance(10s);
    sequences().startChangeAutoPowOffSeq(3, nullptr);
    EXPECT_EQ(device.messages.size(), 3U);
}

TEST_F(MIDISequenceManagerTest, ATimeOutIsNoCompletionEvenWhenSomethingArrivesLater) {
    InProcessDevice& device = connect();
    int completions = 0;
    sequences().startChangeBatteryTypeSeq(1, [&] { ++completions; });
    loop.advance(2s);
    device.answer(reply::batteryTypeSet);
    device.answer(reply::cardState);
    EXPECT_EQ(completions, 0);
}

TEST_F(MIDISequenceManagerTest, ARecorderMayAnswerBeforeSendingReturns) {
    InProcessDevice& device = connect();
    std::size_t answered = 0;
    device.onMessage = [&](const Bytes&) {
        if (answered < 7) {
            device.answer(reply::all()[answered++]);
        }
    };
    int completions = 0;
    sequences().startConnectSeq([&] { ++completions; });
    EXPECT_EQ(device.messages.size(), 7U);
    EXPECT_EQ(completions, 1);
    EXPECT_FALSE(sequences().isSeqRunning());
    EXPECT_EQ(info().autoPowOffType, 3);
}

TEST_F(MIDISequenceManagerTest, SettingsRunOneAfterTheOther) {
    InProcessDevice& device = connect();
    std::vector<std::string> done;
    sequences().startChangeBatteryTypeSeq(1, [&] { done.emplace_back("battery"); });
    sequences().startChangeAutoPowOffSeq(0, [&] { done.emplace_back("power-off"); });
    EXPECT_EQ(device.messages.size(), 1U);
    device.answer(reply::batteryTypeSet);
    EXPECT_EQ(device.messages.size(), 2U);
    device.answer(reply::autoPowOffSet);
    EXPECT_THAT(done, ElementsAre("battery", "power-off"));
}

TEST_F(MIDISequenceManagerTest, ASettingWaitsForTheConnectSequence) {
    InProcessDevice& device = connect();
    sequences().startConnectSeq(nullptr);
    sequences().startChangeBatteryTypeSeq(1, nullptr);
    for (const Bytes& message : {reply::identity, reply::applicationStarted, reply::version,
                                 reply::cardState, reply::batteryType, reply::autoPowOff}) {
        device.answer(message);
    }
    EXPECT_EQ(device.messages.size(), 7U);
    device.answer(reply::dateSet);
    EXPECT_EQ(device.messages.back(), (Bytes{0xF0, 0x52, 0, 0, 0x31, 0x01, 0x01, 0xF7}));
}

TEST_F(MIDISequenceManagerTest, ASecondConnectionWaitsForTheFirst) {
    InProcessDevice& device = connect();
    sequences().startConnectSeq(nullptr);
    sequences().startConnectSeq(nullptr);
    EXPECT_EQ(device.messages.size(), 1U);
    EXPECT_EQ(sequences().queue().size(), 1U);
}

TEST_F(MIDISequenceManagerTest, WhileIdleEveryMessageCallsTheCompletion) {
    InProcessDevice& device = connect();
    int completions = 0;
    sequences().startConnectSeq([&] { ++completions; });
    for (const Bytes& message :
         {reply::identity, reply::applicationStarted, reply::version, reply::cardState,
          reply::batteryType, reply::autoPowOff, reply::dateSet}) {
        device.answer(message);
    }
    EXPECT_EQ(completions, 1);
    device.answer(reply::dateSet);
    device.answer({0xF0, 0xF7});
    EXPECT_EQ(completions, 3);
}

TEST_F(MIDISequenceManagerTest, ACommandsCallbackSeesMessagesUntilItIsContent) {
    InProcessDevice& device = connect();
    std::vector<std::size_t> lengths;
    sequences().exeCommand(Bytes{0xF0, 0x01, 0xF7}, [&](std::span<const std::uint8_t> message) {
        lengths.push_back(message.size());
        return lengths.size() == 2;
    });
    EXPECT_THAT(device.messages, ElementsAre(Bytes{0xF0, 0x01, 0xF7}));
    receive(6);
    receive(7);
    receive(8);
    EXPECT_THAT(lengths, ElementsAre(6U, 7U));
}

TEST_F(MIDISequenceManagerTest, ACommandsCallbackSeesAMessageBeforeTheSequence) {
    run("first");
    notes.clear();
    sequences().exeCommand({}, [this](std::span<const std::uint8_t>) {
        notes.emplace_back("callback");
        return true;
    });
    receive();
    EXPECT_THAT(notes,
                ElementsAre("callback", "first gets 6", "first completed", "first disposed"));
}

TEST_F(MIDISequenceManagerTest, ACallbackMayGiveTheNextCommand) {
    connect();
    int calls = 0;
    sequences().exeCommand(Bytes{0xF0, 0x01, 0xF7}, [&](std::span<const std::uint8_t>) {
        sequences().exeCommand(Bytes{0xF0, 0x02, 0xF7}, [&](std::span<const std::uint8_t>) {
            ++calls;
            return true;
        });
        return true;
    });
    receive();
    EXPECT_EQ(calls, 0);
    receive();
    EXPECT_EQ(calls, 1);
}

TEST_F(MIDISequenceManagerTest, SendWithAResponseSendsNothing) {
    InProcessDevice& device = connect();
    sequences().send(request::identity, [] {});
    EXPECT_THAT(device.messages, IsEmpty());
}

TEST_F(MIDISequenceManagerTest, ACompletionMayStartTheNextSequence) {
    InProcessDevice& device = connect();
    sequences().startChangeBatteryTypeSeq(
        1, [&] { sequences().startChangeAutoPowOffSeq(2, nullptr); });
    device.answer(reply::batteryTypeSet);
    EXPECT_EQ(device.messages.back(), (Bytes{0xF0, 0x52, 0, 0, 0x31, 0x02, 0x02, 0xF7}));
}

} // namespace
} // namespace deckmate::test
