#include "platform/MidiPackets.h"

#include "support/Bytes.h"

#include <array>
#include <gtest/gtest.h>
#include <vector>

namespace deckmate {
namespace {

using test::Bytes;
using test::zeros;

Bytes dataOf(const MIDIPacket& packet) {
    return {packet.data.begin(), packet.data.begin() + packet.length};
}

TEST(MIDIPacketList, GivesPacketsInTheirOrder) {
    std::array<std::uint8_t, 1000> room = {};
    MIDIPacketList list(room);
    EXPECT_TRUE(list.add(7, Bytes{0xF0, 0x52}));
    EXPECT_TRUE(list.add(0x1122334455667788, Bytes{0xF7}));
    EXPECT_EQ(list.numPackets(), 2U);

    MIDIPacketList::Walk walk(list);
    const MIDIPacket* packet = walk.next();
    ASSERT_NE(packet, nullptr);
    EXPECT_EQ(packet->timeStamp, 7U);
    EXPECT_EQ(dataOf(*packet), (Bytes{0xF0, 0x52}));
    packet = walk.next();
    ASSERT_NE(packet, nullptr);
    EXPECT_EQ(packet->timeStamp, 0x1122334455667788U);
    EXPECT_EQ(dataOf(*packet), Bytes{0xF7});
    EXPECT_EQ(walk.next(), nullptr);
}

TEST(MIDIPacketList, AnEmptyOneHasNoPackets) {
    std::array<std::uint8_t, 10> room = {};
    const MIDIPacketList list(room);
    MIDIPacketList::Walk walk(list);
    EXPECT_EQ(walk.next(), nullptr);
    EXPECT_EQ(list.numPackets(), 0U);
}

TEST(MIDIPacketList, APacketOfNoBytesIsOne) {
    std::array<std::uint8_t, 10> room = {};
    MIDIPacketList list(room);
    EXPECT_TRUE(list.add(0, {}));
    MIDIPacketList::Walk walk(list);
    const MIDIPacket* packet = walk.next();
    ASSERT_NE(packet, nullptr);
    EXPECT_EQ(packet->length, 0U);
    EXPECT_EQ(walk.next(), nullptr);
}

TEST(MIDIPacketList, WhatDoesNotFitIsRefusedAndNothingIsWritten) {
    std::array<std::uint8_t, 23> room = {};
    const auto allButOne = std::span(room).first(22);
    MIDIPacketList list(allButOne);
    EXPECT_TRUE(list.add(0, Bytes{1, 2}));
    EXPECT_FALSE(list.add(0, Bytes{1}));
    EXPECT_TRUE(list.add(0, {}));
    EXPECT_FALSE(list.add(0, {}));
    EXPECT_EQ(list.numPackets(), 2U);
    EXPECT_EQ(room[22], 0);
}

TEST(MIDIPacketList, APacketHoldsNoMoreThan256Bytes) {
    std::vector<std::uint8_t> room(1000);
    MIDIPacketList list(room);
    EXPECT_FALSE(list.add(0, zeros(257)));
    EXPECT_TRUE(list.add(0, zeros(256)));
}

} // namespace
} // namespace deckmate
