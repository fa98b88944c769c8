#include "DeviceTest.h"

namespace deckmate::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using State = MIDIManager::State;

/// Whether the MIDI system has event lists.
class MIDIManagerTest : public DeviceTest, public testing::WithParamInterface<bool> {
protected:
    MIDIManagerTest() : DeviceTest(GetParam()) {}
};

INSTANTIATE_TEST_SUITE_P(Paths, MIDIManagerTest, testing::Bool(),
                         [](const auto& path) { return path.param ? "Events" : "Bytes"; });

TEST_P(MIDIManagerTest, WithoutARecorderItIsDisconnectedAndSilent) {
    manager().scanOrloDevice();
    EXPECT_EQ(manager().state(), State::disconnected);
    EXPECT_THAT(user.heard, IsEmpty());
    EXPECT_EQ(midi.clientName, "ORLO Tonebench");
}

TEST_P(MIDIManagerTest, ARecorderThatIsThereIsFoundByTheScan) {
    user.connects = false;
    midi.addDevice("H8 ORLO MIDI 1");
    manager().scanOrloDevice();
    EXPECT_EQ(manager().state(), State::found);
    EXPECT_THAT(user.heard, ElementsAre("found"));
}

TEST_P(MIDIManagerTest, ARecorderThatIsPluggedInIsConnectedAfterASecond) {
    plug();
    EXPECT_EQ(manager().state(), State::settling);
    loop.advance(1s - 1ns);
    EXPECT_EQ(manager().state(), State::settling);
    loop.advance(1ns);
    EXPECT_EQ(manager().state(), State::connected);
    EXPECT_THAT(user.heard, ElementsAre("found", "connected"));
    EXPECT_EQ(midi.ports(), 2U);
    EXPECT_EQ(midi.connections(), 1U);
}

TEST_P(MIDIManagerTest, NamesThatBeginAsTheRecordersMatch) {
    for (const char* name : {"H8 ORLO", "H8 ORLO MIDI 1", "H8 ORLO\xFF"}) {
        InProcessDevice& device = plug(name);
        EXPECT_EQ(manager().state(), State::settling) << name;
        unplug(device);
    }
}

TEST_P(MIDIManagerTest, OtherNamesDont) {
    for (const std::string& name : std::vector<std::string>{"h8 orlo", "The H8 ORLO", " H8 ORLO",
                                                            "H8 ORL", "", std::string(4096, 'H')}) {
        InProcessDevice& device = plug(name);
        EXPECT_EQ(manager().state(), State::disconnected) << name;
        unplug(device);
    }
}

TEST_P(MIDIManagerTest, BothEndsAreNeeded) {
    midi.addDevice("H8 ORLO", Ends::source);
    loop.runPending();
    EXPECT_EQ(manager().state(), State::disconnected);
    midi.addDevice("H8 ORLO", Ends::destination);
    loop.runPending();
    EXPECT_EQ(manager().state(), State::settling);
}

TEST_P(MIDIManagerTest, OfTwoTheFirstIsUsed) {
    InProcessDevice& first = midi.addDevice("H8 ORLO MIDI 1");
    InProcessDevice& second = midi.addDevice("H8 ORLO MIDI 1");
    loop.runPending();
    loop.advance(1s);
    manager().send(request::identity);
    EXPECT_THAT(first.messages, ElementsAre(request::identity));
    EXPECT_THAT(second.messages, IsEmpty());
}

TEST_P(MIDIManagerTest, AnotherDeviceThatComesChangesNothing) {
    connect();
    plug("Piano");
    plug("H8 ORLO MIDI 1");
    EXPECT_EQ(manager().state(), State::connected);
    EXPECT_THAT(user.heard, ElementsAre("found", "connected"));
}

// By design: the recorder is looked for again only when something is added.
TEST_P(MIDIManagerTest, AnotherDeviceThatGoesEndsTheLink) {
    InProcessDevice& piano = plug("Piano");
    connect();
    user.heard.clear();
    unplug(piano);
    EXPECT_EQ(manager().state(), State::disconnected);
    EXPECT_THAT(user.heard, ElementsAre("disconnected"));
    EXPECT_EQ(midi.ports(), 0U);
    loop.advance(60s);
    EXPECT_EQ(manager().state(), State::disconnected);
    plug("Piano");
    EXPECT_EQ(manager().state(), State::settling);
}

TEST_P(MIDIManagerTest, UnpluggedWhileItSettlesItIsNeverConnected) {
    InProcessDevice& device = plug();
    loop.advance(500ms);
    unplug(device);
    EXPECT_EQ(loop.activeTimers(), 0U);
    loop.advance(5s);
    EXPECT_THAT(user.heard, ElementsAre("found", "disconnected"));
    EXPECT_EQ(midi.ports(), 0U);
    EXPECT_EQ(midi.connections(), 0U);
}

TEST_P(MIDIManagerTest, ComesAndGoesWithoutLeavingAnythingBehind) {
    for (int i = 0; i < 100; ++i) {
        unplug(connect());
        EXPECT_EQ(midi.ports(), 0U);
        EXPECT_EQ(midi.connections(), 0U);
    }
    EXPECT_EQ(user.heard.size(), 300U);
}

TEST_P(MIDIManagerTest, ConnectsOnlyWhatWasFound) {
    manager().connect();
    EXPECT_EQ(manager().state(), State::disconnected);
    connect();
    manager().connect();
    EXPECT_EQ(manager().state(), State::connected);
    EXPECT_EQ(midi.ports(), 2U);
}

// Nothing is received then, and what was opened stays open: it has always been so.
TEST_P(MIDIManagerTest, AnInputPortThatFailsStillConnects) {
    midi.canCreateInputPorts = false;
    InProcessDevice& device = connect();
    EXPECT_EQ(manager().state(), State::connected);
    EXPECT_EQ(midi.connections(), 0U);
    unplug(device);
    EXPECT_EQ(manager().state(), State::disconnected);
    EXPECT_EQ(midi.ports(), 1U);
}

TEST_P(MIDIManagerTest, GivingUpTheLinkFlushesBothEnds) {
    connect();
    manager().DeviceDisconnected();
    EXPECT_EQ(midi.flushes, 2U);
    manager().DeviceDisconnected();
    EXPECT_EQ(midi.flushes, 2U);
    EXPECT_THAT(user.heard, ElementsAre("found", "connected", "disconnected"));
}

TEST_P(MIDIManagerTest, SendingWithoutALinkIsHarmless) {
    manager().send(request::identity);
    user.connects = false;
    InProcessDevice& device = plug();
    manager().send(request::identity);
    EXPECT_EQ(device.sends, 0U);
    EXPECT_THAT(device.messages, IsEmpty());
}

TEST_P(MIDIManagerTest, SendingThatFailsIsHarmless) {
    InProcessDevice& device = connect();
    midi.canSend = false;
    manager().send(request::identity);
    EXPECT_THAT(device.messages, IsEmpty());
    midi.canSend = true;
    manager().send(request::version);
    EXPECT_THAT(device.messages, ElementsAre(request::version));
}

TEST_P(MIDIManagerTest, GivingUpTheLinkDisconnectsTheSource) {
    connect();
    manager().DeviceDisconnected();
    EXPECT_EQ(midi.disconnections, 1U);
}

// What the ports were before is forgotten, not disposed of.
TEST_P(MIDIManagerTest, AnOutputPortThatFailsLeavesNoneFromBefore) {
    InProcessDevice& device = connect();
    manager().changeStateTo(State::found);
    midi.canCreateOutputPorts = false;
    manager().connect();
    manager().send(request::identity);
    EXPECT_THAT(device.messages, IsEmpty());
}

TEST_P(MIDIManagerTest, AnInputPortThatFailsLeavesNoneFromBefore) {
    connect();
    manager().changeStateTo(State::found);
    midi.canCreateInputPorts = false;
    manager().connect();
    manager().DeviceDisconnected();
    EXPECT_EQ(midi.disconnections, 0U);
    EXPECT_EQ(midi.ports(), 3U);
}

TEST_P(MIDIManagerTest, WithoutADelegateNothingIsTold) {
    manager().setDelegate(nullptr);
    InProcessDevice& device = plug();
    EXPECT_EQ(manager().state(), State::found);
    manager().connect();
    loop.advance(1s);
    device.answer(reply::identity);
    unplug(device);
    EXPECT_EQ(manager().state(), State::disconnected);
}

TEST(MIDIManagerStates, HaveNames) {
    EXPECT_EQ(MIDIManager::stateToString(0), "DISCONNECTED");
    EXPECT_EQ(MIDIManager::stateToString(1), "SCAN");
    EXPECT_EQ(MIDIManager::stateToString(2), "FOUND");
    EXPECT_EQ(MIDIManager::stateToString(3), "CONNECTING");
    EXPECT_EQ(MIDIManager::stateToString(4), "");
    EXPECT_EQ(MIDIManager::stateToString(5), "CONNECTED");
    EXPECT_EQ(MIDIManager::stateToString(9), "");
}

class BytePath : public DeviceTest {};

TEST_F(BytePath, ItsPortsHaveNames) {
    connect();
    EXPECT_THAT(midi.portNames, ElementsAre("Input", "Lumo Output Port"));
}

TEST_F(BytePath, PacketsAreStampedWithTheTimeOfSending) {
    InProcessDevice& device = connect();
    const std::uint64_t before = midiTimeStamp();
    manager().send(Bytes(300, 1));
    const std::uint64_t after = midiTimeStamp();
    ASSERT_EQ(device.timeStamps.size(), 2U);
    EXPECT_LE(before, device.timeStamps[0]);
    EXPECT_LE(device.timeStamps[0], device.timeStamps[1]);
    EXPECT_LE(device.timeStamps[1], after);
}

TEST_F(BytePath, EventsAreNotSent) {
    InProcessDevice& device = connect();
    manager().sendForMacOS11(request::identity);
    EXPECT_EQ(device.sends, 0U);
}

TEST_F(BytePath, LongMessagesAreCutIntoPacketsOfOneList) {
    InProcessDevice& device = connect();
    Bytes message(600, 0x11);
    message.front() = 0xF0;
    message.back() = 0xF7;
    manager().send(message);
    EXPECT_EQ(device.sends, 1U);
    ASSERT_EQ(device.packets.size(), 3U);
    EXPECT_EQ(device.packets[0].size(), 256U);
    EXPECT_EQ(device.packets[1].size(), 256U);
    EXPECT_EQ(device.packets[2].size(), 88U);
    EXPECT_THAT(device.messages, ElementsAre(message));
}

TEST_F(BytePath, AnythingIsSentAsItIs) {
    InProcessDevice& device = connect();
    manager().send(Bytes{0x90, 0x3C, 0x64});
    EXPECT_THAT(device.packets, ElementsAre(Bytes{0x90, 0x3C, 0x64}));
}

TEST_F(BytePath, AMessageOfNoBytesIsAnEmptyList) {
    InProcessDevice& device = connect();
    manager().send({});
    EXPECT_EQ(device.sends, 1U);
    EXPECT_THAT(device.packets, IsEmpty());
}

TEST_F(BytePath, WhatExceedsTheListIsLeftOut) {
    InProcessDevice& device = connect();
    manager().send(Bytes(20480, 1));
    // Each packet takes 10 bytes more, of 10,000.
    EXPECT_EQ(device.packets.size(), 37U);
}

TEST_F(BytePath, TheLastPacketOfAListIsMarked) {
    InProcessDevice& device = connect();
    device.answerPackets({{0xF0, 1}, {2}, {3, 0xF7}});
    EXPECT_THAT(user.lastFlags, ElementsAre(false, false, true));
}

class EventPath : public DeviceTest {
protected:
    EventPath() : DeviceTest(true) {}
};

TEST_F(EventPath, ItsPortsHaveNames) {
    connect();
    EXPECT_THAT(midi.portNames, ElementsAre("Input Port", "Lumo Output Port"));
}

TEST_F(EventPath, EventsAreSentAtOnceAsMidi1) {
    InProcessDevice& device = connect();
    manager().send(Bytes{0xF0, 1, 2, 3, 4, 5, 6, 7, 0xF7});
    EXPECT_THAT(device.timeStamps, ElementsAre(0U, 0U));
    EXPECT_THAT(device.protocols, ElementsAre(MidiProtocol::midi1, MidiProtocol::midi1));
}

TEST_F(EventPath, EachPacketIsSentByItself) {
    InProcessDevice& device = connect();
    manager().send(Bytes{0xF0, 1, 2, 3, 4, 5, 6, 7, 0xF7});
    EXPECT_EQ(device.sends, 2U);
    EXPECT_THAT(device.events,
                ElementsAre(ElementsAre(0x30160102U, 0x03040506U), ElementsAre(0x30310700U, 0U)));
}

TEST_F(EventPath, OnlySystemExclusiveIsSent) {
    InProcessDevice& device = connect();
    manager().send(Bytes{0x90, 0x3C, 0x64});
    EXPECT_EQ(device.sends, 0U);
}

TEST_F(EventPath, ReceivesEveryPacketOfAList) {
    InProcessDevice& device = connect();
    device.answerEvents({{0x30160102, 0x03040506}, {0x30310700, 0}});
    const auto message = MIDISequenceManager::message();
    EXPECT_EQ(Bytes(message.begin(), message.end()), (Bytes{0xF0, 1, 2, 3, 4, 5, 6, 7}));
}

} // namespace
} // namespace deckmate::test
