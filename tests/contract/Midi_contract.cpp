// Asked of each back end of Midi: those with devices that a test can plug in, in both shapes of
// messages, and the one that never has any. The sequencer's where this machine has one.
#include "MidiContract.h"

#include <algorithm>
#include <cstddef>
#include <gtest/gtest.h>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace deckmate {
namespace {

using namespace test;

class MidiContract : public MidiContractTest {};
class MidiDeviceContract : public MidiContractTest {};

INSTANTIATE_TEST_SUITE_P(All, MidiContract, testing::ValuesIn(allKinds()), nameOf);
INSTANTIATE_TEST_SUITE_P(All, MidiDeviceContract, testing::ValuesIn(kindsWithDevices()), nameOf);

// Whatever is plugged in

TEST_P(MidiContract, IsTheOneThatCurrentGives) {
    EXPECT_EQ(&Midi::current(), &midi());
}

TEST_P(MidiContract, EveryObjectHasAReferenceOfItsOwn) {
    Bytes bytes;
    const std::set<MidiRef> refs = {client_,          midi().createClient("Other", {}),
                                    inputPort(bytes), inputPort(bytes),
                                    outputPort(),     outputPort()};
    EXPECT_EQ(refs.size(), 6U);
    EXPECT_FALSE(refs.contains(0));
}

TEST_P(MidiContract, APortNeedsAClient) {
    MidiRef port = 77;
    const MidiRef noClient = outputPort();
    for (const MidiRef client : {MidiRef{0}, noClient}) {
        EXPECT_EQ(midi().createInputPort(client, "Input", Midi::PacketReader(), port),
                  midiUnknownObject);
        EXPECT_EQ(midi().createInputPort(client, "Input", Midi::EventReader(), port),
                  midiUnknownObject);
        EXPECT_EQ(midi().createOutputPort(client, "Output", port), midiUnknownObject);
    }
    EXPECT_EQ(port, 77U);
}

TEST_P(MidiContract, APortIsDisposedOfOnce) {
    Bytes bytes;
    for (const MidiRef port : {inputPort(bytes), outputPort()}) {
        EXPECT_EQ(midi().disposePort(port), 0);
        EXPECT_EQ(midi().disposePort(port), midiUnknownObject);
    }
}

TEST_P(MidiContract, OnlyPortsAreDisposedOf) {
    EXPECT_EQ(midi().disposePort(0), midiUnknownObject);
    EXPECT_EQ(midi().disposePort(client_), midiUnknownObject);
}

TEST_P(MidiContract, BeyondTheLastEndpointIsNone) {
    EXPECT_EQ(midi().source(midi().numberOfSources()), 0U);
    EXPECT_EQ(midi().destination(midi().numberOfDestinations()), 0U);
    EXPECT_EQ(midi().source(static_cast<std::size_t>(-1)), 0U);
    EXPECT_EQ(midi().destination(static_cast<std::size_t>(-1)), 0U);
}

TEST_P(MidiContract, WhatIsNoEndpointHasNoName) {
    EXPECT_EQ(midi().displayName(0), std::nullopt);
    EXPECT_EQ(midi().displayName(client_), std::nullopt);
}

TEST_P(MidiContract, NothingCanBeConnectedToNothing) {
    Bytes bytes;
    const MidiRef port = inputPort(bytes);
    EXPECT_EQ(midi().connectSource(port, 0), midiUnknownObject);
    EXPECT_EQ(midi().connectSource(port, client_), midiUnknownObject);
    EXPECT_EQ(midi().connectSource(0, 0), midiUnknownObject);
    EXPECT_EQ(midi().disconnectSource(port, 0), midiUnknownObject);
    EXPECT_EQ(midi().disconnectSource(0, 0), midiUnknownObject);
}

TEST_P(MidiContract, NothingCanBeSentToNothing) {
    EXPECT_EQ(send(outputPort(), 0, sysEx(3)), midiUnknownObject);
    EXPECT_EQ(send(0, 0, sysEx(3)), midiUnknownObject);
}

TEST_P(MidiContract, NothingCanBeFlushedOfNothing) {
    EXPECT_EQ(midi().flushOutput(0), midiUnknownObject);
    EXPECT_EQ(midi().flushOutput(client_), midiUnknownObject);
}

TEST_P(MidiContract, OurOwnPortsAreNoNews) {
    settle();
    const std::size_t sources = midi().numberOfSources();
    const std::size_t destinations = midi().numberOfDestinations();
    notices_.clear();
    Bytes bytes;
    const MidiRef input = inputPort(bytes);
    const MidiRef output = outputPort();
    settle();
    EXPECT_EQ(midi().numberOfSources(), sources);
    EXPECT_EQ(midi().numberOfDestinations(), destinations);
    midi().disposePort(input);
    midi().disposePort(output);
    settle();
    EXPECT_EQ(notices_, Notices{});
}

// Plugging

TEST_P(MidiDeviceContract, ADeviceIsASourceAndADestination) {
    plug(recorder);
    EXPECT_NE(sourceOf(recorder), 0U);
    EXPECT_NE(destinationOf(recorder), 0U);
    EXPECT_NE(sourceOf(recorder), destinationOf(recorder));
}

TEST_P(MidiDeviceContract, EachEndpointIsAddedWithANotice) {
    plug(recorder);
    EXPECT_EQ(notices_, (Notices{MidiNotice::objectAdded, MidiNotice::objectAdded}));
}

TEST_P(MidiDeviceContract, EachEndpointIsRemovedWithANotice) {
    plug(recorder);
    notices_.clear();
    unplug(recorder);
    EXPECT_EQ(notices_, (Notices{MidiNotice::objectRemoved, MidiNotice::objectRemoved}));
}

TEST_P(MidiDeviceContract, NoticesComeFromTheLoop) {
    world_->plug(recorder);
    EXPECT_EQ(notices_, Notices{});
    EXPECT_TRUE(runUntil([&] { return notices_.size() == 2; }));
}

TEST_P(MidiDeviceContract, EveryClientIsNotified) {
    Notices others;
    midi().createClient("Other", [&](MidiNotice notice) { others.push_back(notice); });
    plug(recorder);
    EXPECT_EQ(notices_, (Notices{MidiNotice::objectAdded, MidiNotice::objectAdded}));
    EXPECT_EQ(others, notices_);
}

TEST_P(MidiDeviceContract, AtTheFirstNoticeTheWholeDeviceIsThereOrGone) {
    std::vector<bool> found;
    midi().createClient("Other", [&](MidiNotice /*notice*/) {
        found.push_back(sourceOf(recorder) != 0);
        found.push_back(destinationOf(recorder) != 0);
    });
    plug(recorder);
    unplug(recorder);
    EXPECT_EQ(found, (std::vector<bool>{true, true, true, true, false, false, false, false}));
}

TEST_P(MidiDeviceContract, WhatHasGoneHasNoName) {
    plug(recorder);
    const MidiRef source = sourceOf(recorder);
    EXPECT_EQ(midi().displayName(source), recorder);
    unplug(recorder);
    EXPECT_EQ(midi().displayName(source), std::nullopt);
}

TEST_P(MidiDeviceContract, ReferencesAreNotReused) {
    plug(recorder);
    const std::set<MidiRef> before = {sourceOf(recorder), destinationOf(recorder)};
    unplug(recorder);
    plug(recorder);
    EXPECT_FALSE(before.contains(sourceOf(recorder)));
    EXPECT_FALSE(before.contains(destinationOf(recorder)));
}

TEST_P(MidiDeviceContract, DevicesStandInTheOrderOfAppearance) {
    const std::size_t sources = midi().numberOfSources();
    const std::size_t destinations = midi().numberOfDestinations();
    plug(recorder);
    plug(keyboard);
    EXPECT_EQ(midi().source(sources), sourceOf(recorder));
    EXPECT_EQ(midi().source(sources + 1), sourceOf(keyboard));
    EXPECT_EQ(midi().destination(destinations), destinationOf(recorder));
    EXPECT_EQ(midi().destination(destinations + 1), destinationOf(keyboard));
    unplug(recorder);
    EXPECT_EQ(midi().source(sources), sourceOf(keyboard));
    EXPECT_EQ(midi().numberOfSources(), sources + 1);
    EXPECT_EQ(midi().numberOfDestinations(), destinations + 1);
}

// Receiving

TEST_P(MidiDeviceContract, AConnectedPortReceives) {
    plug(recorder);
    Bytes bytes;
    EXPECT_EQ(midi().connectSource(inputPort(bytes), sourceOf(recorder)), 0);
    world_->answer(recorder, sysEx(4));
    EXPECT_TRUE(runUntil([&] { return bytes == sysEx(4); }));
}

TEST_P(MidiDeviceContract, NothingIsReceivedOutsideTheLoop) {
    plug(recorder);
    Bytes bytes;
    midi().connectSource(inputPort(bytes), sourceOf(recorder));
    world_->answer(recorder, sysEx(4));
    EXPECT_EQ(bytes, Bytes{});
}

TEST_P(MidiDeviceContract, LongMessagesArriveWhole) {
    plug(recorder);
    Bytes bytes;
    midi().connectSource(inputPort(bytes), sourceOf(recorder));
    for (const std::size_t count : {6UL, 7UL, 253UL, 254UL, 255UL, 256UL, 600UL, 3000UL}) {
        bytes.clear();
        world_->answer(recorder, sysEx(count));
        EXPECT_TRUE(runUntil([&] { return bytes.size() >= count + 2; }));
        EXPECT_EQ(bytes, sysEx(count));
    }
}

TEST_P(MidiDeviceContract, MessagesArriveWholeHoweverTheyAreCut) {
    plug(recorder);
    Bytes bytes;
    midi().connectSource(inputPort(bytes), sourceOf(recorder));
    const Bytes message = sysEx(20);
    for (std::size_t cut = 1; cut < message.size(); ++cut) {
        bytes.clear();
        const auto at = message.begin() + static_cast<std::ptrdiff_t>(cut);
        world_->answer(recorder, Bytes(message.begin(), at));
        world_->answer(recorder, Bytes(at, message.end()));
        EXPECT_TRUE(runUntil([&] { return bytes.size() >= message.size(); }));
        EXPECT_EQ(bytes, message) << "cut at " << cut;
    }
}

TEST_P(MidiDeviceContract, LongMessagesArriveWholeInLongPieces) {
    plug(recorder);
    Bytes bytes;
    midi().connectSource(inputPort(bytes), sourceOf(recorder));
    const Bytes message = sysEx(800);
    for (const std::size_t size : {255UL, 256UL, 257UL}) {
        bytes.clear();
        for (std::size_t at = 0; at < message.size(); at += size) {
            const auto begin = message.begin() + static_cast<std::ptrdiff_t>(at);
            const std::size_t left = std::min(size, message.size() - at);
            world_->answer(recorder, Bytes(begin, begin + static_cast<std::ptrdiff_t>(left)));
        }
        EXPECT_TRUE(runUntil([&] { return bytes.size() >= message.size(); }));
        EXPECT_EQ(bytes, message) << "pieces of " << size;
    }
}

TEST_P(MidiDeviceContract, OtherMessagesArriveAsWell) {
    plug(recorder);
    Bytes bytes;
    midi().connectSource(inputPort(bytes), sourceOf(recorder));
    for (const Bytes& message : {Bytes{0x90, 0x3C, 0x64}, Bytes{0xC4, 0x09},
                                 Bytes{0xE0, 0x01, 0x02}, Bytes{0xF8}, Bytes{0xF2, 0x34, 0x56}}) {
        bytes.clear();
        world_->answer(recorder, message);
        EXPECT_TRUE(runUntil([&] { return bytes.size() >= message.size(); }));
        EXPECT_EQ(bytes, message);
    }
}

TEST_P(MidiDeviceContract, MessagesArriveInTheirOrder) {
    plug(recorder);
    Bytes bytes;
    midi().connectSource(inputPort(bytes), sourceOf(recorder));
    Bytes all;
    for (std::size_t i = 0; i < 50; ++i) {
        const Bytes message = sysEx(i);
        world_->answer(recorder, message);
        all.insert(all.end(), message.begin(), message.end());
    }
    EXPECT_TRUE(runUntil([&] { return bytes.size() >= all.size(); }));
    EXPECT_EQ(bytes, all);
}

TEST_P(MidiDeviceContract, APortThatIsNotConnectedReceivesNothing) {
    plug(recorder);
    plug(keyboard);
    Bytes bytes;
    midi().connectSource(inputPort(bytes), sourceOf(keyboard));
    world_->answer(recorder, sysEx(4));
    settle();
    EXPECT_EQ(bytes, Bytes{});
}

TEST_P(MidiDeviceContract, AllConnectedPortsReceive) {
    plug(recorder);
    Bytes one;
    Bytes other;
    midi().connectSource(inputPort(one), sourceOf(recorder));
    midi().connectSource(inputPort(other), sourceOf(recorder));
    world_->answer(recorder, sysEx(4));
    EXPECT_TRUE(runUntil([&] { return one == sysEx(4) && other == sysEx(4); }));
}

TEST_P(MidiDeviceContract, APortReceivesFromAllItsSources) {
    plug(recorder);
    plug(keyboard);
    Bytes bytes;
    const MidiRef port = inputPort(bytes);
    midi().connectSource(port, sourceOf(recorder));
    midi().connectSource(port, sourceOf(keyboard));
    world_->answer(recorder, sysEx(1));
    EXPECT_TRUE(runUntil([&] { return bytes == sysEx(1); }));
    bytes.clear();
    world_->answer(keyboard, sysEx(2));
    EXPECT_TRUE(runUntil([&] { return bytes == sysEx(2); }));
}

TEST_P(MidiDeviceContract, ConnectingTwiceReceivesOnce) {
    plug(recorder);
    Bytes bytes;
    const MidiRef port = inputPort(bytes);
    EXPECT_EQ(midi().connectSource(port, sourceOf(recorder)), 0);
    EXPECT_EQ(midi().connectSource(port, sourceOf(recorder)), 0);
    world_->answer(recorder, sysEx(4));
    settle();
    EXPECT_EQ(bytes, sysEx(4));
}

TEST_P(MidiDeviceContract, ADisconnectedPortReceivesNothing) {
    plug(recorder);
    Bytes bytes;
    const MidiRef port = inputPort(bytes);
    midi().connectSource(port, sourceOf(recorder));
    world_->answer(recorder, sysEx(4));
    EXPECT_EQ(midi().disconnectSource(port, sourceOf(recorder)), 0);
    EXPECT_EQ(midi().disconnectSource(port, sourceOf(recorder)), midiUnknownObject);
    world_->answer(recorder, sysEx(4));
    settle();
    EXPECT_EQ(bytes, Bytes{});
}

TEST_P(MidiDeviceContract, ADisposedPortDoesntReceiveWhatIsOnItsWay) {
    plug(recorder);
    Bytes bytes;
    const MidiRef port = inputPort(bytes);
    midi().connectSource(port, sourceOf(recorder));
    world_->answer(recorder, sysEx(4));
    midi().disposePort(port);
    settle();
    EXPECT_EQ(bytes, Bytes{});
}

TEST_P(MidiDeviceContract, AReaderMayDisposeOfItsPort) {
    plug(recorder);
    MidiRef port = 0;
    int calls = 0;
    port = inputPort([&](const Bytes& /*bytes*/) {
        ++calls;
        EXPECT_EQ(midi().disposePort(port), 0);
    });
    midi().connectSource(port, sourceOf(recorder));
    world_->answer(recorder, sysEx(4));
    world_->answer(recorder, sysEx(4));
    settle();
    EXPECT_EQ(calls, 1);
}

TEST_P(MidiDeviceContract, OnlyInputPortsConnect) {
    plug(recorder);
    EXPECT_EQ(midi().connectSource(outputPort(), sourceOf(recorder)), midiUnknownObject);
}

TEST_P(MidiDeviceContract, OnlySourcesAreConnectedTo) {
    plug(recorder);
    Bytes bytes;
    EXPECT_EQ(midi().connectSource(inputPort(bytes), destinationOf(recorder)), midiUnknownObject);
}

TEST_P(MidiDeviceContract, UnpluggingDisconnects) {
    plug(recorder);
    Bytes bytes;
    const MidiRef port = inputPort(bytes);
    const MidiRef source = sourceOf(recorder);
    midi().connectSource(port, source);
    unplug(recorder);
    EXPECT_EQ(midi().disconnectSource(port, source), midiUnknownObject);
    plug(recorder);
    world_->answer(recorder, sysEx(4));
    settle();
    EXPECT_EQ(bytes, Bytes{});
}

TEST_P(MidiDeviceContract, ADeviceThatComesBackIsConnectedAnew) {
    plug(recorder);
    Bytes bytes;
    const MidiRef port = inputPort(bytes);
    midi().connectSource(port, sourceOf(recorder));
    unplug(recorder);
    plug(recorder);
    EXPECT_EQ(midi().connectSource(port, sourceOf(recorder)), 0);
    world_->answer(recorder, sysEx(4));
    EXPECT_TRUE(runUntil([&] { return bytes == sysEx(4); }));
}

TEST_P(MidiDeviceContract, PortsMayBeMadeAThousandTimes) {
    plug(recorder);
    Bytes bytes;
    for (int i = 0; i < 1000; ++i) {
        const MidiRef input = inputPort(bytes);
        const MidiRef output = outputPort();
        ASSERT_EQ(midi().connectSource(input, sourceOf(recorder)), 0);
        ASSERT_EQ(midi().disposePort(input), 0);
        ASSERT_EQ(midi().disposePort(output), 0);
    }
}

} // namespace
} // namespace deckmate
