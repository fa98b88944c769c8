#include "platform/UmpTranslation.h"

#include "support/Bytes.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <random>
#include <vector>

namespace deckmate {
namespace {

using test::Bytes;
using test::operator+;
using Words = std::vector<std::uint32_t>;

Words encoded(const Bytes& bytes) {
    Words words;
    UmpEncoder().encode(bytes, words);
    return words;
}

Bytes decoded(const Words& words) {
    Bytes bytes;
    decodeUmp(words, bytes);
    return bytes;
}

/// F0, so many data bytes 01 02 03 ..., F7.
Bytes sysEx(std::uint8_t count) {
    Bytes bytes = {0xF0};
    for (std::uint8_t i = 1; i <= count; ++i) {
        bytes.push_back(i);
    }
    bytes.push_back(0xF7);
    return bytes;
}

// Bytes to packets. First word of type 3: type, group, status, count (4 bits each), two data bytes.

TEST(UmpEncoder, SysExOfUpToSixBytesIsOneCompletePacket) {
    EXPECT_EQ(encoded({0xF0, 0x7E, 0x00, 0x06, 0x01, 0xF7}), (Words{0x30047E00, 0x06010000}));
    EXPECT_EQ(encoded(sysEx(6)), (Words{0x30060102, 0x03040506}));
}

TEST(UmpEncoder, SysExOfNoBytesIsACompletePacketOfNone) {
    EXPECT_EQ(encoded({0xF0, 0xF7}), (Words{0x30000000, 0x00000000}));
}

TEST(UmpEncoder, LongerSysExHasAStartAndAnEnd) {
    EXPECT_EQ(encoded(sysEx(7)), (Words{0x30160102, 0x03040506, 0x30310700, 0x00000000}));
    EXPECT_EQ(encoded(sysEx(12)), (Words{0x30160102, 0x03040506, 0x30360708, 0x090A0B0C}));
}

TEST(UmpEncoder, SysExOfMoreThanTwelveBytesHasContinuations) {
    EXPECT_EQ(encoded(sysEx(13)),
              (Words{0x30160102, 0x03040506, 0x30260708, 0x090A0B0C, 0x30310D00, 0x00000000}));
}

TEST(UmpEncoder, NoCutOfSysExChangesItsPackets) {
    const Bytes message = sysEx(20);
    const Words whole = encoded(message);
    for (std::size_t cut = 0; cut <= message.size(); ++cut) {
        const auto at = message.begin() + static_cast<std::ptrdiff_t>(cut);
        UmpEncoder encoder;
        Words words;
        encoder.encode(Bytes(message.begin(), at), words);
        encoder.encode(Bytes(at, message.end()), words);
        EXPECT_EQ(words, whole) << "cut at " << cut;
    }
}

TEST(UmpEncoder, SysExByteByByteHasTheSamePackets) {
    UmpEncoder encoder;
    Words words;
    for (const std::uint8_t byte : sysEx(13)) {
        encoder.encode(Bytes{byte}, words);
    }
    EXPECT_EQ(words, encoded(sysEx(13)));
}

TEST(UmpEncoder, PacketsOfSysExDontWaitForItsEnd) {
    // The seventh byte tells that the first six are not the last.
    EXPECT_EQ(encoded({0xF0, 1, 2, 3, 4, 5, 6}), Words{});
    EXPECT_EQ(encoded({0xF0, 1, 2, 3, 4, 5, 6, 7}), (Words{0x30160102, 0x03040506}));
}

TEST(UmpEncoder, SysExThatAnotherOneBreaksOffHasNoEnd) {
    EXPECT_EQ(encoded({0xF0, 1, 2, 0xF0, 3, 0xF7}), (Words{0x30010300, 0x00000000}));
    EXPECT_EQ(encoded({0xF0, 1, 2, 3, 4, 5, 6, 7, 0xF0, 8, 0xF7}),
              (Words{0x30160102, 0x03040506, 0x30010800, 0x00000000}));
}

TEST(UmpEncoder, AChannelMessageBreaksSysExOff) {
    EXPECT_EQ(encoded({0xF0, 1, 0x90, 0x3C, 0x64, 2, 0xF7}), Words{0x20903C64});
}

TEST(UmpEncoder, RealTimeInsideSysExComesBetweenItsPackets) {
    EXPECT_EQ(encoded({0xF0, 1, 0xF8, 2, 0xF7}), (Words{0x10F80000, 0x30020102, 0x00000000}));
}

TEST(UmpEncoder, RealTimeInsideAChannelMessageLeavesItWhole) {
    EXPECT_EQ(encoded({0x90, 0x3C, 0xFE, 0x64}), (Words{0x10FE0000, 0x20903C64}));
}

TEST(UmpEncoder, ChannelMessagesHaveOneOrTwoDataBytes) {
    EXPECT_EQ(encoded({0x80, 1, 2, 0x91, 3, 4, 0xA2, 5, 6, 0xB3, 7, 8}),
              (Words{0x20800102, 0x20910304, 0x20A20506, 0x20B30708}));
    EXPECT_EQ(encoded({0xC4, 9, 0xD5, 10, 0xE6, 11, 12}),
              (Words{0x20C40900, 0x20D50A00, 0x20E60B0C}));
}

TEST(UmpEncoder, ChannelMessagesGoOnWithoutANewStatus) {
    EXPECT_EQ(encoded({0x90, 1, 2, 3, 4, 0xC1, 5, 6}),
              (Words{0x20900102, 0x20900304, 0x20C10500, 0x20C10600}));
}

TEST(UmpEncoder, RealTimeKeepsTheRunningStatus) {
    EXPECT_EQ(encoded({0x90, 1, 2, 0xF8, 3, 4}), (Words{0x20900102, 0x10F80000, 0x20900304}));
}

TEST(UmpEncoder, SystemMessagesEndTheRunningStatus) {
    EXPECT_EQ(encoded({0x90, 1, 2, 0xF6, 3, 4}), (Words{0x20900102, 0x10F60000}));
    EXPECT_EQ(encoded({0x90, 1, 2, 0xF0, 0xF7, 3, 4}), (Words{0x20900102, 0x30000000, 0x00000000}));
}

TEST(UmpEncoder, SystemCommonMessagesHaveNoneOneOrTwoDataBytes) {
    EXPECT_EQ(encoded({0xF1, 0x12, 0xF2, 0x34, 0x56, 0xF3, 0x07, 0xF6}),
              (Words{0x10F11200, 0x10F23456, 0x10F30700, 0x10F60000}));
}

TEST(UmpEncoder, SystemCommonMessagesDontGoOnWithoutAStatus) {
    EXPECT_EQ(encoded({0xF3, 1, 2, 3}), Words{0x10F30100});
}

TEST(UmpEncoder, RealTimeMessagesAreOnePacketEach) {
    EXPECT_EQ(encoded({0xF8, 0xFA, 0xFB, 0xFC, 0xFE, 0xFF}),
              (Words{0x10F80000, 0x10FA0000, 0x10FB0000, 0x10FC0000, 0x10FE0000, 0x10FF0000}));
}

TEST(UmpEncoder, UndefinedStatusesAreDroppedWithTheirData) {
    EXPECT_EQ(encoded({0xF4, 1, 0xF5, 2, 0xF9, 0xFD}), Words{});
}

TEST(UmpEncoder, DataWithoutAStatusAreDropped) {
    EXPECT_EQ(encoded({0x52, 0x00}), Words{});
}

TEST(UmpEncoder, ALoneEndIsDropped) {
    EXPECT_EQ(encoded({0xF7, 0x52, 0xF7}), Words{});
}

TEST(UmpEncoder, AMessageThatLacksDataIsDropped) {
    EXPECT_EQ(encoded({0x90, 1, 0xC0, 2}), Words{0x20C00200});
}

TEST(UmpEncoder, AfterAResetTheRestOfTheMessageIsDropped) {
    UmpEncoder encoder;
    Words words;
    encoder.encode(Bytes{0xF0, 1, 2}, words);
    encoder.reset();
    encoder.encode(Bytes{3, 0xF7, 0xF0, 4, 0xF7}, words);
    EXPECT_EQ(words, (Words{0x30010400, 0x00000000}));
}

// Packets to bytes

TEST(DecodeUmp, SysExPacketsHaveTheirFrame) {
    EXPECT_EQ(decoded({0x30047E00, 0x06010000}), (Bytes{0xF0, 0x7E, 0x00, 0x06, 0x01, 0xF7}));
    EXPECT_EQ(decoded({0x30160102, 0x03040506}), (Bytes{0xF0, 1, 2, 3, 4, 5, 6}));
    EXPECT_EQ(decoded({0x30260102, 0x03040506}), (Bytes{1, 2, 3, 4, 5, 6}));
    EXPECT_EQ(decoded({0x30310700, 0x00000000}), (Bytes{7, 0xF7}));
    EXPECT_EQ(decoded({0x30000000, 0x00000000}), (Bytes{0xF0, 0xF7}));
}

TEST(DecodeUmp, ShortMessagesHaveTheirLength) {
    EXPECT_EQ(decoded({0x20903C64, 0x20C40900, 0x10F23456, 0x10F11200, 0x10F80000}),
              (Bytes{0x90, 0x3C, 0x64, 0xC4, 0x09, 0xF2, 0x34, 0x56, 0xF1, 0x12, 0xF8}));
}

TEST(DecodeUmp, TheGroupDoesntCount) {
    EXPECT_EQ(decoded({0x35010700, 0x00000000, 0x2F903C64}),
              (Bytes{0xF0, 7, 0xF7, 0x90, 0x3C, 0x64}));
}

TEST(DecodeUmp, DataHaveSevenBits) {
    EXPECT_EQ(decoded({0x3002F7FF, 0x00000000, 0x2090BCE4}),
              (Bytes{0xF0, 0x77, 0x7F, 0xF7, 0x90, 0x3C, 0x64}));
}

TEST(DecodeUmp, SysExPacketsWithAWrongCountOrStatusAreLeftOut) {
    EXPECT_EQ(decoded({0x30070102, 0x03040506, 0x300F0102, 0x03040506}), Bytes{});
    EXPECT_EQ(decoded({0x30410100, 0x00000000, 0x30F10100, 0x00000000}), Bytes{});
}

TEST(DecodeUmp, ShortPacketsWithAStatusOfAnotherTypeAreLeftOut) {
    EXPECT_EQ(decoded({0x20F80000, 0x10903C64, 0x203C6400, 0x10F00000, 0x10F70000, 0x10F40000}),
              Bytes{});
}

TEST(DecodeUmp, OtherTypesAreSteppedOver) {
    // Utility, voice of MIDI 2.0 (2 words), 8-bit data (4 words), reserved (1, 2, 3, 4 words).
    EXPECT_EQ(decoded({0x00000000,                                     //
                       0x40903C00, 0xFFFF0000,                         //
                       0x50000000, 0x20903C64, 0x20903C64, 0x20903C64, //
                       0x60000000, 0x80000000, 0x20903C64,             //
                       0xB0000000, 0x20903C64, 0x20903C64,             //
                       0xF0000000, 0x20903C64, 0x20903C64, 0x20903C64, //
                       0x20C00100}),
              (Bytes{0xC0, 1}));
}

TEST(DecodeUmp, APacketThatIsCutShortIsLeftOut) {
    EXPECT_EQ(decoded({0x20C00100, 0x30047E00}), (Bytes{0xC0, 1}));
    EXPECT_EQ(decoded({0x50000000, 0x20C00100, 0x20C00100}), Bytes{});
}

TEST(DecodeUmp, GivesBackWhatWasEncoded) {
    const Bytes messages = sysEx(100) + Bytes{0x90, 0x3C, 0x64, 0xF8} + sysEx(0) + sysEx(6);
    EXPECT_EQ(decoded(encoded(messages)), messages);
}

// Event packets

std::vector<Words> packed(const Words& words) {
    std::vector<Words> packets;
    for (const MIDIEventPacket& packet : packEvents(words, 0)) {
        packets.emplace_back(packet.words.begin(), packet.words.begin() + packet.wordCount);
    }
    return packets;
}

TEST(PackEvents, APacketEndsWithItsMessage) {
    EXPECT_EQ(packed({0x30160102, 0x03040506, 0x30310700, 0x00000000, 0x20903C64, 0x30010800, 0}),
              (std::vector<Words>{{0x30160102, 0x03040506, 0x30310700, 0x00000000},
                                  {0x20903C64},
                                  {0x30010800, 0}}));
}

TEST(PackEvents, AFullPacketIsFollowedByAnother) {
    Words words;
    for (int i = 0; i < 33; ++i) {
        words.insert(words.end(), {0x30260102, 0x03040506});
    }
    const std::vector<Words> packets = packed(words);
    ASSERT_EQ(packets.size(), 2U);
    EXPECT_EQ(packets[0].size(), 64U);
    EXPECT_EQ(packets[1], (Words{0x30260102, 0x03040506}));
}

TEST(PackEvents, CarriesTheTime) {
    EXPECT_EQ(packEvents(Words{0x20903C64}, 0x1122334455667788).at(0).timeStamp,
              0x1122334455667788U);
}

TEST(PackEvents, NothingMakesNoPacket) {
    EXPECT_EQ(packed({}), std::vector<Words>{});
}

TEST(PackEvents, WordsThatAreCutShortAreLeftOut) {
    EXPECT_EQ(packed({0x20903C64, 0x30047E00}), std::vector<Words>{{0x20903C64}});
}

// Anything at all, for the checks of the library and the sanitizers

TEST(UmpTranslation, AnyBytesGiveWholePacketsOfKnownTypes) {
    std::mt19937 random(1);
    UmpEncoder encoder;
    Words words;
    for (int i = 0; i < 100'000; ++i) {
        encoder.encode(
            Bytes{static_cast<std::uint8_t>(random() % 4 == 0 ? random() | 0xF0 : random())},
            words);
    }
    std::size_t at = 0;
    while (at < words.size()) {
        const std::uint32_t type = words[at] >> 28;
        ASSERT_TRUE(type >= 1 && type <= 3) << words[at];
        at += wordsOfUmp(words[at]);
    }
    EXPECT_EQ(at, words.size());
}

TEST(UmpTranslation, AnyWordsGiveBytes) {
    std::mt19937 random(2);
    for (int round = 0; round < 1000; ++round) {
        Words words(random() % 80);
        for (std::uint32_t& word : words) {
            word = static_cast<std::uint32_t>(random());
        }
        EXPECT_LE(decoded(words).size(), words.size() * 4);
        for (const MIDIEventPacket& packet : packEvents(words, 0)) {
            EXPECT_LE(packet.wordCount, MIDIEventPacket::mostWords);
        }
    }
}

} // namespace
} // namespace deckmate
