// A user of the link who disconnects, scans or leaves from inside its calls.
#include "DeviceTest.h"

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

} // namespace
} // namespace deckmate::test
