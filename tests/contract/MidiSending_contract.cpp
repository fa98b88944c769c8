// Sending, asked of each back end of Midi that has devices.
#include "MidiContract.h"

#include <algorithm>
#include <cstddef>
#include <gtest/gtest.h>
#include <vector>

namespace deckmate {
namespace {

using namespace test;

class MidiSendingContract : public MidiContractTest {};

INSTANTIATE_TEST_SUITE_P(All, MidiSendingContract, testing::ValuesIn(kindsWithDevices()), nameOf);

TEST_P(MidiSendingContract, WhatIsSentArrives) {
    plug(recorder);
    EXPECT_EQ(send(outputPort(), destinationOf(recorder), sysEx(4)), 0);
    EXPECT_TRUE(runUntil([&] { return world_->taken(recorder) == sysEx(4); }));
}

TEST_P(MidiSendingContract, LongMessagesAreSentWhole) {
    plug(recorder);
    const MidiRef port = outputPort();
    for (const std::size_t count : {253UL, 254UL, 255UL, 600UL, 3000UL}) {
        const std::size_t before = world_->taken(recorder).size();
        EXPECT_EQ(send(port, destinationOf(recorder), sysEx(count)), 0);
        EXPECT_TRUE(runUntil([&] { return world_->taken(recorder).size() >= before + count + 2; }));
        const Bytes all = world_->taken(recorder);
        EXPECT_EQ(Bytes(all.begin() + static_cast<std::ptrdiff_t>(before), all.end()),
                  sysEx(count));
    }
}

TEST_P(MidiSendingContract, MessagesAreSentInTheirOrder) {
    plug(recorder);
    const MidiRef port = outputPort();
    Bytes all;
    for (const Bytes& message :
         {sysEx(0), sysEx(20), Bytes{0x90, 0x3C, 0x64}, Bytes{0xF8}, sysEx(6)}) {
        EXPECT_EQ(send(port, destinationOf(recorder), message), 0);
        all.insert(all.end(), message.begin(), message.end());
    }
    EXPECT_TRUE(runUntil([&] { return world_->taken(recorder).size() >= all.size(); }));
    EXPECT_EQ(world_->taken(recorder), all);
}

TEST_P(MidiSendingContract, WhatIsSentArrivesAtItsDestinationOnly) {
    plug(recorder);
    plug(keyboard);
    const MidiRef port = outputPort();
    send(port, destinationOf(recorder), sysEx(1));
    send(port, destinationOf(keyboard), sysEx(2));
    EXPECT_TRUE(runUntil([&] { return !world_->taken(keyboard).empty(); }));
    settle();
    EXPECT_EQ(world_->taken(recorder), sysEx(1));
    EXPECT_EQ(world_->taken(keyboard), sysEx(2));
}

TEST_P(MidiSendingContract, SendingNothingIsNoFailure) {
    plug(recorder);
    EXPECT_EQ(send(outputPort(), destinationOf(recorder), {}), 0);
}

TEST_P(MidiSendingContract, OnlyOutputPortsSend) {
    plug(recorder);
    Bytes bytes;
    EXPECT_EQ(send(inputPort(bytes), destinationOf(recorder), sysEx(4)), midiUnknownObject);
    const MidiRef disposed = outputPort();
    midi().disposePort(disposed);
    EXPECT_EQ(send(disposed, destinationOf(recorder), sysEx(4)), midiUnknownObject);
}

TEST_P(MidiSendingContract, OnlyDestinationsAreSentTo) {
    plug(recorder);
    EXPECT_EQ(send(outputPort(), sourceOf(recorder), sysEx(4)), midiUnknownObject);
}

TEST_P(MidiSendingContract, NothingIsSentToWhatHasGone) {
    plug(recorder);
    const MidiRef destination = destinationOf(recorder);
    const MidiRef port = outputPort();
    EXPECT_EQ(send(port, destination, sysEx(4)), 0);
    unplug(recorder);
    EXPECT_EQ(send(port, destination, sysEx(4)), midiUnknownObject);
    EXPECT_EQ(midi().flushOutput(destination), midiUnknownObject);
}

TEST_P(MidiSendingContract, ADeviceThatComesBackIsSentToAnew) {
    plug(recorder);
    const MidiRef port = outputPort();
    send(port, destinationOf(recorder), sysEx(1));
    EXPECT_TRUE(runUntil([&] { return !world_->taken(recorder).empty(); }));
    unplug(recorder);
    plug(recorder);
    EXPECT_EQ(send(port, destinationOf(recorder), sysEx(2)), 0);
    EXPECT_TRUE(runUntil([&] {
        const Bytes all = world_->taken(recorder);
        const Bytes last = sysEx(2);
        return all.size() >= last.size() && std::equal(last.rbegin(), last.rend(), all.rbegin());
    }));
}

TEST_P(MidiSendingContract, EndpointsCanBeFlushed) {
    plug(recorder);
    EXPECT_EQ(midi().flushOutput(sourceOf(recorder)), 0);
    EXPECT_EQ(midi().flushOutput(destinationOf(recorder)), 0);
}

} // namespace
} // namespace deckmate
