// The fake's own promises; those that it shares with the real back ends are asked by
// tests/contract.
#include "support/InProcessMidi.h"

#include "support/Bytes.h"
#include "support/ManualRunLoop.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <gtest/gtest.h>
#include <optional>
#include <span>
#include <string>
#include <thread>
#include <vector>

namespace deckmate {
namespace {

using test::Bytes;
using test::Ends;
using test::InProcessDevice;
using test::InProcessMidi;
using test::ManualRunLoop;
using Words = InProcessDevice::Words;
using Lists = std::vector<std::vector<Bytes>>;
using EventLists = std::vector<std::vector<Words>>;

const Bytes request = {0xF0, 0x52, 0x00, 0xF7};

class InProcessMidiTest : public testing::Test {
protected:
    MidiRef packetPort(Lists& lists) {
        MidiRef port = 0;
        midi_.createInputPort(
            client_, "Input",
            [&lists](const MIDIPacketList& packets) {
                std::vector<Bytes>& list = lists.emplace_back();
                MIDIPacketList::Walk walk(packets);
                while (const MIDIPacket* packet = walk.next()) {
                    list.emplace_back(packet->data.begin(), packet->data.begin() + packet->length);
                }
            },
            port);
        midi_.connectSource(port, device_.source());
        return port;
    }
    MidiRef eventPort(EventLists& lists) {
        MidiRef port = 0;
        midi_.createInputPort(
            client_, "Input",
            [&lists](const MIDIEventList& events) {
                std::vector<Words>& list = lists.emplace_back();
                for (const MIDIEventPacket& packet : events.packets) {
                    list.emplace_back(packet.words.begin(),
                                      packet.words.begin() + packet.wordCount);
                }
            },
            port);
        midi_.connectSource(port, device_.source());
        return port;
    }
    MidiStatus sendPackets(const std::vector<Bytes>& packets) {
        std::array<std::uint8_t, 2000> room = {};
        MIDIPacketList list(room);
        for (const Bytes& packet : packets) {
            list.add(0, packet);
        }
        return midi_.send(output_, device_.destination(), list);
    }
    MidiStatus sendEvent(const Words& words) {
        MIDIEventPacket packet;
        packet.wordCount = static_cast<std::uint32_t>(words.size());
        std::copy(words.begin(), words.end(), packet.words.begin());
        return midi_.send(output_, device_.destination(),
                          MIDIEventList{.packets = std::span(&packet, 1)});
    }

    ManualRunLoop loop_;
    InProcessMidi midi_{false};
    InProcessDevice& device_ = midi_.addDevice("H8 ORLO");
    int notices_ = 0;
    MidiRef client_ = midi_.createClient("Test", [this](MidiNotice /*notice*/) { ++notices_; });
    MidiRef output_ = [this] {
        MidiRef port = 0;
        midi_.createOutputPort(client_, "Output", port);
        return port;
    }();
};

TEST_F(InProcessMidiTest, HasEventListsAsTold) {
    EXPECT_FALSE(midi_.hasEventLists());
}

TEST_F(InProcessMidiTest, KnowsTheClientsName) {
    EXPECT_EQ(midi_.clientName, "Test");
}

TEST_F(InProcessMidiTest, ADeviceMayHaveOneEndOnly) {
    const InProcessDevice& source = midi_.addDevice("Out", Ends::source);
    const InProcessDevice& destination = midi_.addDevice("In", Ends::destination);
    EXPECT_EQ(source.destination(), 0U);
    EXPECT_EQ(destination.source(), 0U);
    EXPECT_EQ(midi_.numberOfSources(), 2U);
    EXPECT_EQ(midi_.numberOfDestinations(), 2U);
    loop_.runPending();
    EXPECT_EQ(notices_, 4); // two of the first device
}

// What devices get

TEST_F(InProcessMidiTest, PacketsAreJoinedToMessages) {
    EXPECT_EQ(sendPackets({{0xF0, 1}, {2, 3}, {0xF7}}), 0);
    EXPECT_EQ(device_.messages, (std::vector<Bytes>{{0xF0, 1, 2, 3, 0xF7}}));
    EXPECT_EQ(device_.packets, (std::vector<Bytes>{{0xF0, 1}, {2, 3}, {0xF7}}));
    EXPECT_EQ(device_.sends, 1U);
}

TEST_F(InProcessMidiTest, EventsAreJoinedToMessages) {
    sendEvent({0x30160102, 0x03040506});
    EXPECT_EQ(device_.messages, std::vector<Bytes>{});
    sendEvent({0x30310700, 0x00000000});
    EXPECT_EQ(device_.messages, (std::vector<Bytes>{{0xF0, 1, 2, 3, 4, 5, 6, 7, 0xF7}}));
    EXPECT_EQ(device_.events, (std::vector<Words>{{0x30160102, 0x03040506}, {0x30310700, 0}}));
    EXPECT_EQ(device_.sends, 2U);
}

TEST_F(InProcessMidiTest, MessagesInOnePacketAreTakenApart) {
    sendPackets({{0xF0, 1, 0xF7, 0xF0, 2, 0xF7}});
    EXPECT_EQ(device_.messages, (std::vector<Bytes>{{0xF0, 1, 0xF7}, {0xF0, 2, 0xF7}}));
}

TEST_F(InProcessMidiTest, OtherBytesAreTakenAsTheyCome) {
    sendPackets({{0x52, 0x00}});
    EXPECT_EQ(device_.messages, (std::vector<Bytes>{{0x52, 0x00}}));
}

TEST_F(InProcessMidiTest, ADeviceMayAnswerInsideTheSending) {
    Lists lists;
    packetPort(lists);
    device_.onMessage = [this](const Bytes& message) { device_.answer(message); };
    sendPackets({request});
    EXPECT_EQ(lists, (Lists{{request}}));
}

// What devices send

TEST_F(InProcessMidiTest, AnAnswerIsAListOfPacketsOf256Bytes) {
    Lists lists;
    packetPort(lists);
    device_.answer(Bytes(600, 0x11));
    EXPECT_EQ(lists, (Lists{{Bytes(256, 0x11), Bytes(256, 0x11), Bytes(88, 0x11)}}));
}

TEST_F(InProcessMidiTest, PacketsArriveAsTheyAre) {
    Lists lists;
    packetPort(lists);
    device_.answerPackets({{0x52}, {}, {0x00, 0xF7}});
    EXPECT_EQ(lists, (Lists{{{0x52}, {}, {0x00, 0xF7}}}));
}

TEST_F(InProcessMidiTest, AnEmptyListArrivesToo) {
    Lists lists;
    packetPort(lists);
    device_.answerPackets({});
    EXPECT_EQ(lists, Lists{{}});
}

TEST_F(InProcessMidiTest, EventsArriveAsTheyAre) {
    EventLists lists;
    eventPort(lists);
    device_.answerEvents({{0x30FF0000}, {}, Words(64, 0xFFFFFFFF)});
    EXPECT_EQ(lists, (EventLists{{{0x30FF0000}, {}, Words(64, 0xFFFFFFFF)}}));
}

TEST_F(InProcessMidiTest, BytesArriveAtEventPortsAsWords) {
    EventLists lists;
    eventPort(lists);
    device_.answer({0xF0, 0x7E, 0x00});
    device_.answer({0x06, 0x01, 0xF7});
    EXPECT_EQ(lists, (EventLists{{{0x30047E00, 0x06010000}}}));
}

TEST_F(InProcessMidiTest, EachShapeReachesItsPortsOnly) {
    Lists packets;
    EventLists events;
    packetPort(packets);
    eventPort(events);
    device_.answerPackets({{0xF8}});
    device_.answerEvents({{0x10FA0000}});
    EXPECT_EQ(packets, (Lists{{{0xF8}}}));
    EXPECT_EQ(events, (EventLists{{{0x10FA0000}}}));
}

TEST_F(InProcessMidiTest, LaterIsWhenTheLoopGetsThere) {
    Lists packets;
    EventLists events;
    packetPort(packets);
    eventPort(events);
    device_.answerLater({0xF8});
    device_.answerPacketsLater({{0xFA}});
    device_.answerEventsLater({{0x10FB0000}});
    EXPECT_EQ(packets, Lists{});
    loop_.runPending();
    EXPECT_EQ(packets, (Lists{{{0xF8}}, {{0xFA}}}));
    EXPECT_EQ(events, (EventLists{{{0x10F80000}}, {{0x10FB0000}}}));
}

TEST_F(InProcessMidiTest, WhatIsOnItsWayEndsWithTheDevice) {
    Lists lists;
    packetPort(lists);
    device_.answerLater({0xF8});
    midi_.removeDevice(device_);
    loop_.runPending();
    EXPECT_EQ(lists, Lists{});
}

TEST(InProcessMidi, WhatIsOnItsWayMayOutliveIt) {
    ManualRunLoop loop;
    int calls = 0;
    {
        InProcessMidi midi(false);
        midi.createClient("Test", [&](MidiNotice /*notice*/) { ++calls; });
        midi.addDevice("H8 ORLO").answerLater({0xF8});
    }
    loop.runPending();
    EXPECT_EQ(calls, 0);
}

// Counting and failing

TEST_F(InProcessMidiTest, CountsPortsAndConnections) {
    Lists lists;
    EXPECT_EQ(midi_.ports(), 1U);
    const MidiRef port = packetPort(lists);
    EXPECT_EQ(midi_.ports(), 2U);
    EXPECT_EQ(midi_.connections(), 1U);
    midi_.disposePort(port);
    EXPECT_EQ(midi_.ports(), 1U);
    EXPECT_EQ(midi_.connections(), 0U);
}

TEST_F(InProcessMidiTest, CountsFlushes) {
    midi_.flushOutput(device_.source());
    midi_.flushOutput(0);
    EXPECT_EQ(midi_.flushes, 1U);
}

TEST_F(InProcessMidiTest, InputPortsCanBeMadeToFail) {
    midi_.canCreateInputPorts = false;
    MidiRef port = 77;
    EXPECT_EQ(midi_.createInputPort(client_, "Input", Midi::PacketReader(), port),
              midiNotAvailable);
    EXPECT_EQ(port, 77U);
    EXPECT_EQ(midi_.createOutputPort(client_, "Output", port), 0);
}

TEST_F(InProcessMidiTest, SendingCanBeMadeToFail) {
    midi_.canSend = false;
    EXPECT_EQ(sendPackets({request}), midiSendFailed);
    EXPECT_EQ(device_.messages, std::vector<Bytes>{});
    EXPECT_EQ(device_.sends, 0U);
}

TEST_F(InProcessMidiTest, ADeviceCanBeMadeToHaveNoName) {
    device_.hasName = false;
    EXPECT_EQ(midi_.displayName(device_.source()), std::nullopt);
    EXPECT_EQ(midi_.displayName(device_.destination()), std::nullopt);
}

TEST_F(InProcessMidiTest, AnyNoticeCanBeGiven) {
    loop_.runPending();
    std::vector<MidiNotice> notices;
    midi_.createClient("Other", [&](MidiNotice notice) { notices.push_back(notice); });
    midi_.notifyLater(MidiNotice::propertyChanged);
    EXPECT_EQ(notices, std::vector<MidiNotice>{});
    loop_.runPending();
    EXPECT_EQ(notices, std::vector<MidiNotice>{MidiNotice::propertyChanged});
}

// Misuse

using InProcessMidiDeathTest = InProcessMidiTest;

TEST_F(InProcessMidiDeathTest, CallsOnAnotherThreadAreMisuse) {
    EXPECT_DEATH(std::thread([&] { midi_.disposePort(output_); }).join(),
                 "disposePort called on another thread");
}

TEST_F(InProcessMidiDeathTest, AReferenceThatWasNeverGivenOutIsMisuse) {
    EXPECT_DEATH(midi_.connectSource(output_, 1000),
                 "connectSource called with a reference that was never given out");
}

TEST_F(InProcessMidiDeathTest, AnAnswerOfADeviceThatIsGoneIsMisuse) {
    midi_.removeDevice(device_);
    EXPECT_DEATH(device_.answer({0xF8}), "a device answers that is gone");
    EXPECT_DEATH(device_.answerLater({0xF8}), "a device answers that is gone");
}

TEST_F(InProcessMidiDeathTest, AnAnswerOfADeviceWithoutASourceIsMisuse) {
    InProcessDevice& deaf = midi_.addDevice("In", Ends::destination);
    EXPECT_DEATH(deaf.answer({0xF8}), "a device answers that has no source");
}

TEST_F(InProcessMidiDeathTest, RemovingADeviceTwiceIsMisuse) {
    midi_.removeDevice(device_);
    EXPECT_DEATH(midi_.removeDevice(device_), "a device is removed that is gone");
}

TEST_F(InProcessMidiDeathTest, PacketsThatAreTooLongAreMisuse) {
    EXPECT_DEATH(device_.answerPackets({Bytes(257)}), "a packet of more than 256 bytes");
    EXPECT_DEATH(device_.answerEvents({Words(65)}), "an event packet of more than 64 words");
}

} // namespace
} // namespace deckmate
