// A user of the link who disconnects, scans, leaves or drops it from inside its calls.
#include "DeviceTest.h"
#include "device/MIDICommon.h"

namespace deckmate::test {
namespace {

using testing::ElementsAre;
using State = MIDIManager::State;

/// Does inside each call what the test wants.
class MeddlingUser final : public MIDIManagerCB {
public:
    using Action = std::function<void()>;

    std::vector<std::string> heard;
    Action onFound = [] { MIDIManager::get().connect(); };
    Action onConnected = [] {};
    Action onDisconnected = [] {};
    Action onData = [] {};

    void MIDIManagerFound() override { note("found", onFound); }
    void MIDIManagerConnected() override { note("connected", onConnected); }
    void MIDIManagerDisconnected() override { note("disconnected", onDisconnected); }
    void MIDIManagerReceivedData(const MIDIEventPacket& /*packet*/) override {
        note("data", onData);
    }
    void MIDIManagerReceivedData_iOS13(const MIDIPacket& /*packet*/, bool /*isLast*/) override {
        note("data", onData);
    }

private:
    void note(const char* what, const Action& action) {
        heard.emplace_back(what);
        action();
    }
};

class LinkReentry : public DeviceTest, public testing::WithParamInterface<bool> {
protected:
    LinkReentry() : DeviceTest(GetParam()) {
        // The notices are over before the meddling begins.
        manager().setDelegate(nullptr);
        loop.runPending();
        manager().DeviceDisconnected();
        manager().setDelegate(&meddler);
    }

    static void disconnect() { manager().DeviceDisconnected(); }
    static void rescan() { manager().scanOrloDevice(); }
    static void dropManager() { MIDIManager::s_midi().reset(); }
    void settle() {
        rescan();
        loop.advance(1s);
    }
    /// Two messages in one list.
    void sendTwo() {
        if (GetParam()) {
            device.answerEvents({{0x30010100, 0}, {0x30010200, 0}});
        } else {
            device.answerPackets({{0xF0, 1, 0xF7}, {0xF0, 2, 0xF7}});
        }
    }
    void expectNothingLeft() {
        EXPECT_EQ(manager().state(), State::disconnected);
        EXPECT_EQ(midi.ports(), 0U);
        EXPECT_EQ(midi.connections(), 0U);
        EXPECT_EQ(loop.activeTimers(), 0U);
    }

    MeddlingUser meddler;
    InProcessDevice& device = midi.addDevice("H8 ORLO MIDI 1");
};

INSTANTIATE_TEST_SUITE_P(Paths, LinkReentry, testing::Bool(),
                         [](const auto& path) { return path.param ? "Events" : "Bytes"; });

TEST_P(LinkReentry, DisconnectingWhenFoundForgetsTheRecorder) {
    meddler.onFound = disconnect;
    rescan();
    EXPECT_THAT(meddler.heard, ElementsAre("found", "disconnected"));
    expectNothingLeft();
}

TEST_P(LinkReentry, ConnectingAndDisconnectingWhenFoundLeavesNothing) {
    meddler.onFound = [] {
        manager().connect();
        disconnect();
    };
    rescan();
    EXPECT_THAT(meddler.heard, ElementsAre("found", "disconnected"));
    expectNothingLeft();
}

TEST_P(LinkReentry, ScanningWhenFoundFindsNothingNew) {
    meddler.onFound = [] {
        rescan();
        manager().connect();
        rescan();
    };
    rescan();
    EXPECT_THAT(meddler.heard, ElementsAre("found"));
    EXPECT_EQ(manager().state(), State::settling);
    EXPECT_EQ(midi.ports(), 2U);
}

TEST_P(LinkReentry, ARecorderThatGoesBeforeItIsConnectedIsOneDisconnection) {
    meddler.onFound = [this] {
        midi.removeDevice(device);
        manager().connect();
    };
    rescan();
    EXPECT_EQ(manager().state(), State::settling);
    EXPECT_EQ(midi.connections(), 0U);
    loop.runPending();
    EXPECT_THAT(meddler.heard, ElementsAre("found", "disconnected"));
    expectNothingLeft();
}

TEST_P(LinkReentry, DisconnectingWhenConnectedEndsTheLink) {
    meddler.onConnected = disconnect;
    settle();
    EXPECT_THAT(meddler.heard, ElementsAre("found", "connected", "disconnected"));
    expectNothingLeft();
}

TEST_P(LinkReentry, ScanningWhenConnectedFindsNothingNew) {
    meddler.onConnected = rescan;
    settle();
    EXPECT_THAT(meddler.heard, ElementsAre("found", "connected"));
    EXPECT_EQ(manager().state(), State::connected);
}

TEST_P(LinkReentry, ALinkThatIsBegunAnewWhenConnectedSettlesOnceMore) {
    meddler.onConnected = [this] {
        meddler.onConnected = [] {};
        disconnect();
        rescan();
    };
    settle();
    EXPECT_THAT(meddler.heard, ElementsAre("found", "connected", "disconnected", "found"));
    EXPECT_EQ(manager().state(), State::settling);
    loop.advance(1s - 1ns);
    EXPECT_EQ(manager().state(), State::settling);
    loop.advance(1ns);
    EXPECT_EQ(manager().state(), State::connected);
    EXPECT_EQ(midi.ports(), 2U);
    EXPECT_EQ(midi.connections(), 1U);
}

TEST_P(LinkReentry, WhenDisconnectedIsToldNothingIsLeft) {
    settle();
    meddler.onDisconnected = [this] { expectNothingLeft(); };
    unplug(device);
    EXPECT_EQ(meddler.heard.back(), "disconnected");
}

TEST_P(LinkReentry, DisconnectingWhenDisconnectedDoesNothing) {
    settle();
    meddler.heard.clear();
    meddler.onDisconnected = disconnect;
    unplug(device);
    EXPECT_THAT(meddler.heard, ElementsAre("disconnected"));
    expectNothingLeft();
}

TEST_P(LinkReentry, ScanningWhenDisconnectedFindsARecorderThatIsStillThere) {
    settle();
    meddler.heard.clear();
    meddler.onDisconnected = rescan;
    disconnect();
    EXPECT_EQ(midi.ports(), 2U);
    EXPECT_EQ(midi.connections(), 1U);
    loop.advance(1s);
    sendTwo();
    EXPECT_THAT(meddler.heard, ElementsAre("disconnected", "found", "connected", "data", "data"));
}

TEST_P(LinkReentry, ScanningWhenDisconnectedMissesARecorderThatHasGone) {
    settle();
    meddler.heard.clear();
    meddler.onDisconnected = rescan;
    unplug(device);
    EXPECT_THAT(meddler.heard, ElementsAre("disconnected"));
    expectNothingLeft();
}

// The list is on its way to the user already.
TEST_P(LinkReentry, DisconnectingInTheMiddleOfAListGetsTheRestOfItAndNoMore) {
    settle();
    meddler.heard.clear();
    meddler.onData = disconnect;
    sendTwo();
    sendTwo();
    EXPECT_THAT(meddler.heard, ElementsAre("data", "disconnected", "data"));
    expectNothingLeft();
}

TEST_P(LinkReentry, ScanningInTheMiddleOfAListChangesNothing) {
    settle();
    meddler.heard.clear();
    meddler.onData = rescan;
    sendTwo();
    EXPECT_THAT(meddler.heard, ElementsAre("data", "data"));
    EXPECT_EQ(manager().state(), State::connected);
}

TEST_P(LinkReentry, AUserWhoLeavesInTheMiddleOfAListGetsNoMore) {
    settle();
    meddler.heard.clear();
    meddler.onData = [] { manager().setDelegate(nullptr); };
    sendTwo();
    unplug(device);
    EXPECT_THAT(meddler.heard, ElementsAre("data"));
    expectNothingLeft();
}

TEST_P(LinkReentry, AUserWhoLeavesWhenFoundHearsNoMore) {
    meddler.onFound = [] {
        manager().connect();
        manager().setDelegate(nullptr);
    };
    settle();
    unplug(device);
    EXPECT_THAT(meddler.heard, ElementsAre("found"));
    expectNothingLeft();
}

TEST_P(LinkReentry, AManagerThatGoesInTheMiddleOfAListTellsNoMore) {
    settle();
    meddler.heard.clear();
    meddler.onData = dropManager;
    sendTwo();
    EXPECT_THAT(meddler.heard, ElementsAre("data"));
    expectNothingLeft();
}

// The client's notice is still under way when the list comes.
TEST_P(LinkReentry, AManagerThatGoesInAListInsideANoticeTellsNoMore) {
    meddler.onFound = [this] {
        manager().connect();
        sendTwo();
    };
    meddler.onData = dropManager;
    midi.notifyLater(MidiNotice::objectAdded);
    loop.runPending();
    EXPECT_THAT(meddler.heard, ElementsAre("found", "data"));
    expectNothingLeft();
}

TEST_P(LinkReentry, AManagerMayGoWhenItTellsOfTheLink) {
    meddler.onFound = [] {
        manager().connect();
        dropManager();
    };
    midi.notifyLater(MidiNotice::objectAdded);
    loop.runPending();
    EXPECT_THAT(meddler.heard, ElementsAre("found"));
    expectNothingLeft();

    meddler.onFound = [] { manager().connect(); };
    meddler.onConnected = dropManager;
    manager().setDelegate(&meddler);
    settle();
    EXPECT_EQ(meddler.heard.back(), "connected");
    expectNothingLeft();

    meddler.onConnected = [] {};
    meddler.onDisconnected = dropManager;
    manager().setDelegate(&meddler);
    settle();
    unplug(device);
    EXPECT_EQ(meddler.heard.back(), "disconnected");
    expectNothingLeft();
}

/// A user who drops everything from inside what the sequences call.
class SequenceReentry : public DeviceTest, public testing::WithParamInterface<bool> {
protected:
    SequenceReentry() : DeviceTest(GetParam()) {}

    static void dropAll() {
        MIDIManager::s_midi().reset();
        MIDISequenceManager::s_seq_controller().reset();
    }
    void expectNothingLeft() {
        // Nor has anybody asked for new ones.
        EXPECT_EQ(MIDIManager::s_midi(), nullptr);
        EXPECT_EQ(MIDISequenceManager::s_seq_controller(), nullptr);
        EXPECT_EQ(midi.ports(), 0U);
        EXPECT_EQ(loop.activeTimers(), 0U);
    }
    /// Two card reports in one list.
    void reportTwice(InProcessDevice& from) {
        if (GetParam()) {
            const InProcessDevice::Words report = eventsOf(reply::cardState);
            from.answerEvents({report, report});
        } else {
            from.answerPackets({reply::cardState, reply::cardState});
        }
    }

    int calls = 0;

private:
    static InProcessDevice::Words eventsOf(const Bytes& message) {
        InProcessDevice::Words words;
        const auto packets = MIDICommon::convertByteToPacket(message);
        for (const GLPacket& packet : packets.value()) {
            words.insert(words.end(), packet.data.begin(), packet.data.end());
        }
        return words;
    }
};

INSTANTIATE_TEST_SUITE_P(Paths, SequenceReentry, testing::Bool(),
                         [](const auto& path) { return path.param ? "Events" : "Bytes"; });

TEST_P(SequenceReentry, ACompletionMayEndEverything) {
    InProcessDevice& device = connect();
    sequences().startChangeBatteryTypeSeq(1, [this] {
        ++calls;
        dropAll();
    });
    sequences().startChangeAutoPowOffSeq(2, [this] { ++calls; });
    device.answer(reply::batteryTypeSet);
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(device.messages.size(), 1U);
    expectNothingLeft();
}

TEST_P(SequenceReentry, ACompletionThatHearsReportsMayEndEverything) {
    InProcessDevice& device = connect();
    bool isIdle = false;
    sequences().startConnectSeq([&] {
        if (isIdle) {
            ++calls;
            dropAll();
        }
    });
    for (std::size_t i = 0; i < 7; ++i) {
        device.answer(reply::all()[i]);
    }
    isIdle = true;
    reportTwice(device);
    EXPECT_EQ(calls, 1);
    expectNothingLeft();
}

TEST_P(SequenceReentry, ACommandsCallbackMayEndEverything) {
    InProcessDevice& device = connect();
    sequences().exeCommand(request::identity, [this](std::span<const std::uint8_t>) {
        ++calls;
        dropAll();
        return false;
    });
    reportTwice(device);
    EXPECT_EQ(calls, 1);
    expectNothingLeft();
}

// Each answer comes while its request is being sent, the last one seven calls deep.
TEST_P(SequenceReentry, AnAnswerThatComesAtOnceMayEndEverything) {
    InProcessDevice& device = connect();
    std::size_t answered = 0;
    device.onMessage = [&](const Bytes&) { device.answer(reply::all()[answered++]); };
    sequences().startConnectSeq([this] {
        ++calls;
        dropAll();
    });
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(answered, 7U);
    expectNothingLeft();
}

} // namespace
} // namespace deckmate::test
