// What arrives becomes messages: as words of Universal MIDI Packets, and as pieces of bytes.
#include "device/MIDISequenceManager.h"

#include "support/Bytes.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <initializer_list>

namespace deckmate {
namespace {

using test::Bytes;
using Manager = MIDISequenceManager;

Bytes message() {
    return {Manager::message().begin(), Manager::message().end()};
}

bool words(std::initializer_list<std::uint32_t> list) {
    MIDIEventPacket packet;
    packet.wordCount = static_cast<std::uint32_t>(list.size());
    std::copy(list.begin(), list.end(), packet.words.begin());
    return Manager::convertMidiPacket2ByteArr(packet);
}

MIDIPacket packetOf(const Bytes& bytes) {
    MIDIPacket packet;
    packet.length = static_cast<std::uint16_t>(bytes.size());
    std::copy_n(bytes.begin(), std::min(bytes.size(), MIDIPacket::mostBytes), packet.data.begin());
    return packet;
}

// ---- Universal MIDI Packets

TEST(ReceivedWords, ACompletePacketIsAMessage) {
    EXPECT_TRUE(words({0x30047E00, 0x06020000}));
    EXPECT_EQ(message(), (Bytes{0xF0, 0x7E, 0x00, 0x06, 0x02}));
}

TEST(ReceivedWords, StartAndEndAreOneMessage) {
    EXPECT_FALSE(words({0x30160102, 0x03040506}));
    EXPECT_TRUE(words({0x30320708, 0x00000000}));
    EXPECT_EQ(message(), (Bytes{0xF0, 1, 2, 3, 4, 5, 6, 7, 8}));
}

TEST(ReceivedWords, WhatContinuesIsAppended) {
    EXPECT_FALSE(words({0x30160102, 0x03040506, 0x30210700, 0x00000000}));
    EXPECT_TRUE(words({0x30300000, 0x00000000}));
    EXPECT_EQ(message(), (Bytes{0xF0, 1, 2, 3, 4, 5, 6, 7}));
}

TEST(ReceivedWords, AStartDropsWhatWasThere) {
    EXPECT_FALSE(words({0x30160102, 0x03040506}));
    EXPECT_FALSE(words({0x30110900, 0x00000000}));
    EXPECT_TRUE(words({0x30310A00, 0x00000000}));
    EXPECT_EQ(message(), (Bytes{0xF0, 9, 10}));
}

TEST(ReceivedWords, WithoutAStartTheRestIsAppendedToTheMessageBefore) {
    EXPECT_TRUE(words({0x30010100, 0x00000000}));
    EXPECT_TRUE(words({0x30310200, 0x00000000}));
    EXPECT_EQ(message(), (Bytes{0xF0, 1, 2}));
}

TEST(ReceivedWords, ACountAboveSixAppendsNothingButTheStatusCounts) {
    for (std::uint32_t count = 7; count < 16; ++count) {
        EXPECT_FALSE(words({0x30100102 | count << 16, 0x03040506}));
        EXPECT_EQ(message(), Bytes{0xF0});
        EXPECT_TRUE(words({0x30300102 | count << 16, 0x03040506}));
        EXPECT_EQ(message(), Bytes{0xF0});
        EXPECT_TRUE(words({0x30000102 | count << 16, 0x03040506}));
    }
}

TEST(ReceivedWords, OtherStatusesAreDropped) {
    EXPECT_TRUE(words({0x30010100, 0x00000000}));
    for (std::uint32_t status = 4; status < 16; ++status) {
        EXPECT_FALSE(words({0x30030102 | status << 20, 0x03000000}));
    }
    EXPECT_EQ(message(), (Bytes{0xF0, 1}));
}

TEST(ReceivedWords, OnlyTheFirstMessageOfAPacketIsKept) {
    EXPECT_TRUE(words({0x30010100, 0x00000000, 0x30010200, 0x00000000}));
    EXPECT_EQ(message(), (Bytes{0xF0, 1}));
}

TEST(ReceivedWords, AMessageMayBeginAndEndInOnePacket) {
    EXPECT_TRUE(words({0x30110100, 0, 0x30310200, 0}));
    EXPECT_EQ(message(), (Bytes{0xF0, 1, 2}));
}

TEST(ReceivedWords, APacketOf128BitsEndsTheWalk) {
    EXPECT_FALSE(words({0x50000000, 0, 0, 0, 0x30010100, 0}));
    EXPECT_TRUE(words({0x30010200, 0, 0x50000000, 0, 0, 0}));
    EXPECT_EQ(message(), (Bytes{0xF0, 2}));
}

TEST(ReceivedWords, APacketCutShortIsDropped) {
    EXPECT_TRUE(words({0x30010100, 0}));
    EXPECT_FALSE(words({0x30010200}));
    EXPECT_FALSE(words({0x00000000}));
    EXPECT_FALSE(words({}));
    EXPECT_EQ(message(), (Bytes{0xF0, 1}));
}

TEST(ReceivedWords, CountsBeyondThePacketAreHarmless) {
    MIDIEventPacket packet;
    packet.wordCount = 0xFFFFFFFF;
    packet.words.fill(0x10F80000);
    EXPECT_TRUE(Manager::convertMidiPacket2ByteArr(packet));
}

// MIDI 2.0 UMP, 2.1.4: words by message type.
TEST(ReceivedWords, TheTypeTellsTheSize) {
    const std::vector<std::uint32_t> sizes = {1, 1, 1, 2, 2, 4, 1, 1, 2, 2, 2, 3, 3, 4, 4, 4};
    for (std::uint32_t type = 0; type < 16; ++type) {
        EXPECT_EQ(Manager::count_word_in_message(type << 28 | 0x0FFFFFFF), sizes[type]);
    }
}

TEST(ReceivedWords, OtherSizesAreSkippedWhole) {
    // 64 and 96 bits, the second words of which look like the beginning of a message.
    EXPECT_TRUE(words({0x40903C00, 0x30010900, 0xB0000000, 0x30010900, 0x30010900, 0x30010100, 0}));
    EXPECT_EQ(message(), (Bytes{0xF0, 1}));
}

TEST(ReceivedWords, AShortMessageIsNewAfterOneThatWasTooLong) {
    EXPECT_FALSE(words({0x30160102, 0x03040506}));
    for (std::uint32_t kept = 7; kept <= Manager::capacity; kept += 6) {
        EXPECT_FALSE(words({0x30260102, 0x03040506}));
    }
    EXPECT_FALSE(words({0x30300000, 0}));
    EXPECT_TRUE(words({0x20903C64}));
    EXPECT_TRUE(words({0x30310500, 0}));
    EXPECT_EQ(message(), (Bytes{0xF0, 0x90, 0x3C, 0x64, 5}));
}

TEST(ReceivedWords, AShortMessageTakesTheSameForm) {
    EXPECT_TRUE(words({0x20903C64}));
    EXPECT_EQ(message(), (Bytes{0xF0, 0x90, 0x3C, 0x64}));
    EXPECT_TRUE(words({0x20C00500}));
    EXPECT_EQ(message(), (Bytes{0xF0, 0xC0, 0x05}));
    EXPECT_TRUE(words({0x10F80000}));
    EXPECT_EQ(message(), (Bytes{0xF0, 0xF8}));
    EXPECT_TRUE(words({0x10F27F01}));
    EXPECT_EQ(message(), (Bytes{0xF0, 0xF2, 0x7F, 0x01}));
    EXPECT_TRUE(words({0x10F30500}));
    EXPECT_EQ(message(), (Bytes{0xF0, 0xF3, 0x05}));
}

// Bytes by MIDI 1.0 status, and the leading F0.
TEST(ReceivedWords, AShortMessageHasTheLengthOfItsStatus) {
    const auto lengthOf = [](std::uint32_t status) {
        EXPECT_TRUE(words({0x20001234 | status << 16}));
        EXPECT_EQ(message()[1], status);
        return message().size();
    };
    for (std::uint32_t channel = 0; channel < 16; ++channel) {
        for (const std::uint32_t status : {0x80U, 0x90U, 0xA0U, 0xB0U, 0xE0U}) {
            EXPECT_EQ(lengthOf(status | channel), 1U + 3U) << status;
        }
        for (const std::uint32_t status : {0xC0U, 0xD0U}) {
            EXPECT_EQ(lengthOf(status | channel), 1U + 2U) << status;
        }
    }
    EXPECT_EQ(lengthOf(0xF2), 1U + 3U);
    EXPECT_EQ(lengthOf(0xF1), 1U + 2U);
    EXPECT_EQ(lengthOf(0xF3), 1U + 2U);
    for (const std::uint32_t status : {0xF0U, 0xF4U, 0xF5U, 0xF6U, 0xF7U, 0xF8U, 0xF9U, 0xFAU,
                                       0xFBU, 0xFCU, 0xFDU, 0xFEU, 0xFFU}) {
        EXPECT_EQ(lengthOf(status), 1U + 1U) << status;
    }
}

TEST(ReceivedWords, AStatusWithoutItsHighestBitHasTheSameLength) {
    EXPECT_TRUE(words({0x20103C64}));
    EXPECT_EQ(message(), (Bytes{0xF0, 0x10, 0x3C, 0x64}));
    EXPECT_TRUE(words({0x20503C64}));
    EXPECT_EQ(message(), (Bytes{0xF0, 0x50, 0x3C}));
    EXPECT_TRUE(words({0x207F3C64}));
    EXPECT_EQ(message(), (Bytes{0xF0, 0x7F}));
}

TEST(ReceivedWords, EveryTypeOfOneWordButUtilityIsAShortMessage) {
    for (const std::uint32_t type : {1U, 2U, 6U, 7U}) {
        EXPECT_TRUE(words({0x00D54321 | type << 28}));
        EXPECT_EQ(message(), (Bytes{0xF0, 0xD5, 0x43})) << type;
    }
}

TEST(ReceivedWords, WhatContinuesAShortMessageIsAppendedToItsLength) {
    EXPECT_TRUE(words({0x10F47F7F}));
    EXPECT_TRUE(words({0x30320102, 0x00000000}));
    EXPECT_EQ(message(), (Bytes{0xF0, 0xF4, 1, 2}));
}

TEST(ReceivedWords, AFullPacketIsReadToItsLastWord) {
    MIDIEventPacket packet;
    packet.wordCount = 64;
    Bytes expected = {0xF0};
    for (std::size_t i = 0; i < 32; ++i) {
        const auto byte = static_cast<std::uint8_t>(i + 1);
        const std::uint32_t status = i == 0 ? 1 : i == 31 ? 3 : 2;
        packet.words[2 * i] = 0x30010000 | status << 20 | std::uint32_t{byte} << 8;
        expected.push_back(byte);
    }
    EXPECT_TRUE(Manager::convertMidiPacket2ByteArr(packet));
    EXPECT_EQ(message(), expected);
}

TEST(ReceivedWords, TheLastWordOfAFullPacketMayBeAMessage) {
    MIDIEventPacket packet;
    packet.wordCount = 64;
    packet.words[63] = 0x20903C64; // behind 63 utility messages
    EXPECT_TRUE(Manager::convertMidiPacket2ByteArr(packet));
    EXPECT_EQ(message(), (Bytes{0xF0, 0x90, 0x3C, 0x64}));
}

TEST(ReceivedWords, AMessageThatAFullPacketCutsShortIsDropped) {
    EXPECT_TRUE(words({0x30010100, 0}));
    MIDIEventPacket packet;
    packet.wordCount = 64;
    packet.words[63] = 0x30010200;
    EXPECT_FALSE(Manager::convertMidiPacket2ByteArr(packet));
    EXPECT_EQ(message(), (Bytes{0xF0, 1}));
}

TEST(ReceivedWords, UtilityMessagesAreDropped) {
    EXPECT_TRUE(words({0x30010100, 0}));
    EXPECT_FALSE(words({0x00200001}));
    EXPECT_EQ(message(), (Bytes{0xF0, 1}));
}

TEST(ReceivedWords, BeyondTheCapacityNothingIsKeptAndTheMessageNeverCompletes) {
    EXPECT_FALSE(words({0x30160000, 0}));
    for (int i = 0; i < 3332; ++i) {
        EXPECT_FALSE(words({0x30260000, 0}));
    }
    EXPECT_EQ(message().size(), 19999U);
    EXPECT_FALSE(words({0x30260000, 0}));
    EXPECT_EQ(message().size(), 20000U);
    EXPECT_FALSE(words({0x30310000, 0}));
    EXPECT_TRUE(words({0x30010100, 0}));
    EXPECT_EQ(message(), (Bytes{0xF0, 1}));
}

TEST(ReceivedWords, AMessageThatFillsTheCapacityCompletes) {
    EXPECT_FALSE(words({0x30160000, 0}));
    for (int i = 0; i < 3332; ++i) {
        EXPECT_FALSE(words({0x30260000, 0}));
    }
    EXPECT_TRUE(words({0x30310000, 0}));
    EXPECT_EQ(message().size(), 20000U);
}

// ---- Bytes

class ReceivedBytes : public testing::Test {
protected:
    bool bytes(const Bytes& list) { return manager.storeToBuffer(true, packetOf(list)); }

    Manager manager;
};

TEST_F(ReceivedBytes, AMessageInOnePiece) {
    EXPECT_TRUE(bytes({0xF0, 0x52, 0x00, 0x6E, 0x00, 0x15, 0xF7}));
    EXPECT_EQ(message(), (Bytes{0xF0, 0x52, 0x00, 0x6E, 0x00, 0x15}));
}

TEST_F(ReceivedBytes, IsLoggedToStandardOutput) {
    testing::internal::CaptureStdout();
    bytes({0xF0, 0x52, 0x00, 0x6E, 0x00, 0x15, 0xF7});
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "LOG GL RECV <--- HW: F0,52,00,6E,00,15,F7,\n\n");
}

TEST_F(ReceivedBytes, PiecesOfAnySizeGiveTheSame) {
    const Bytes whole = {0xF0, 0x52, 0x00, 0x00, 0x11, 0x01, '1', '0', '2', '3', 0xF7};
    for (std::size_t cut = 1; cut < whole.size(); ++cut) {
        const auto middle = whole.begin() + static_cast<std::ptrdiff_t>(cut);
        EXPECT_FALSE(bytes({whole.begin(), middle}));
        EXPECT_TRUE(bytes({middle, whole.end()}));
        EXPECT_EQ(message(), Bytes(whole.begin(), whole.end() - 1));
    }
}

TEST_F(ReceivedBytes, ALostBeginningIsReplaced) {
    bytes({0xF0, 1, 0xF7});
    EXPECT_TRUE(bytes({0x52, 0x00, 0xF7}));
    EXPECT_EQ(message(), (Bytes{0xF0, 0x52, 0x00}));
}

TEST_F(ReceivedBytes, AnF0InsideBeginsAnew) {
    EXPECT_FALSE(bytes({0xF0, 1, 2}));
    EXPECT_TRUE(bytes({0xF0, 3, 0xF7}));
    EXPECT_EQ(message(), (Bytes{0xF0, 3}));
}

TEST_F(ReceivedBytes, TheEndAloneIsAMessageOfNothing) {
    EXPECT_TRUE(bytes({0xF7}));
    EXPECT_EQ(message(), Bytes{0xF0});
    EXPECT_TRUE(bytes({0xF0, 0xF7}));
    EXPECT_EQ(message(), Bytes{0xF0});
}

TEST_F(ReceivedBytes, NoBytesChangeNothing) {
    EXPECT_FALSE(bytes({0xF0, 1}));
    EXPECT_FALSE(bytes({}));
    EXPECT_TRUE(bytes({2, 0xF7}));
    EXPECT_EQ(message(), (Bytes{0xF0, 1, 2}));
}

TEST_F(ReceivedBytes, TheLastPacketOfAListIsNoEnd) {
    EXPECT_FALSE(manager.storeToBuffer(true, packetOf({0xF0, 1})));
    EXPECT_TRUE(manager.storeToBuffer(false, packetOf({2, 0xF7})));
}

TEST_F(ReceivedBytes, APacketThatClaimsMoreThanItHoldsCountsForThat) {
    MIDIPacket packet = packetOf(Bytes(256, 0xF7));
    packet.data[0] = 0xF0;
    packet.length = 300;
    EXPECT_FALSE(manager.storeToBuffer(true, packet));
    EXPECT_EQ(message().size(), 300U);
    packet.length = 0xFFFF;
    EXPECT_FALSE(manager.storeToBuffer(true, packet));
    EXPECT_EQ(message().size(), 20000U);
}

TEST_F(ReceivedBytes, AMessageThatFillsTheCapacityCompletesAndALongerOneDoesNot) {
    for (const std::size_t dataBytes : {19999U, 20000U, 1000000U}) {
        EXPECT_FALSE(bytes({0xF0}));
        for (std::size_t left = dataBytes; left > 0;) {
            const std::size_t piece = std::min<std::size_t>(left, 250);
            EXPECT_FALSE(bytes(Bytes(piece, 1)));
            left -= piece;
        }
        EXPECT_EQ(bytes({0xF7}), dataBytes == 19999);
        EXPECT_EQ(message().size(), 20000U);
        EXPECT_TRUE(bytes({0xF0, 5, 0xF7}));
        EXPECT_EQ(message(), (Bytes{0xF0, 5}));
    }
}

} // namespace
} // namespace deckmate
