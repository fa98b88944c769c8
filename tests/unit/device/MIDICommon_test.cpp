#include "device/MIDICommon.h"

#include "support/ManualRunLoop.h"

#include <array>
#include <cstdint>
#include <gtest/gtest.h>
#include <initializer_list>
#include <optional>
#include <thread>
#include <vector>

namespace deckmate {
namespace {

using test::ManualRunLoop;

TEST(MIDICommon, OnTheMainThreadTheBlockRunsAtOnce) {
    const ManualRunLoop loop;
    bool hasRun = false;
    MIDICommon::runOnUIThread([&] { hasRun = true; });
    EXPECT_TRUE(hasRun);
}

TEST(MIDICommon, OnTheMainThreadNothingIsQueued) {
    ManualRunLoop loop;
    int calls = 0;
    MIDICommon::runOnUIThread([&] { ++calls; });
    loop.runPending();
    EXPECT_EQ(calls, 1);
}

TEST(MIDICommon, BlocksOnTheMainThreadMayBeNested) {
    const ManualRunLoop loop;
    bool hasRun = false;
    MIDICommon::runOnUIThread([&] { MIDICommon::runOnUIThread([&] { hasRun = true; }); });
    EXPECT_TRUE(hasRun);
}

TEST(MIDICommon, FromAnotherThreadTheBlockRunsOnTheMainOneBeforeTheCallReturns) {
    ManualRunLoop loop;
    std::thread::id ranOn;
    bool hadRunOnReturn = false;
    loop.runInBackground([&] {
        MIDICommon::runOnUIThread([&] { ranOn = std::this_thread::get_id(); });
        hadRunOnReturn = ranOn != std::thread::id();
    });
    loop.runBackgroundWork();
    EXPECT_EQ(ranOn, std::this_thread::get_id());
    EXPECT_TRUE(hadRunOnReturn);
}

TEST(MIDICommon, BackgroundWorkIsGivenAwayAndRunsOnAnotherThread) {
    ManualRunLoop loop;
    std::thread::id ranOn;
    MIDICommon::runBackground([&] { ranOn = std::this_thread::get_id(); });
    EXPECT_EQ(ranOn, std::thread::id());
    loop.runBackgroundWork();
    EXPECT_NE(ranOn, std::thread::id());
    EXPECT_NE(ranOn, std::this_thread::get_id());
}

/// The two words of each packet.
std::vector<std::array<std::uint32_t, 2>> wordsOf(std::initializer_list<std::uint8_t> message) {
    std::vector<std::array<std::uint32_t, 2>> words;
    const auto packets = MIDICommon::convertByteToPacket(std::vector<std::uint8_t>(message));
    for (const GLPacket& packet : packets.value()) {
        EXPECT_EQ(packet.size, 2);
        words.push_back(packet.data);
    }
    return words;
}

using Words = std::vector<std::array<std::uint32_t, 2>>;

// Type 3, group 0, status, count, two bytes; four bytes.
TEST(UniversalMidiPackets, AShortMessageIsOneCompletePacket) {
    EXPECT_EQ(wordsOf({0xF0, 0x7E, 0x00, 0x06, 0x01, 0xF7}), (Words{{0x30047E00, 0x06010000}}));
}

TEST(UniversalMidiPackets, SixBytesStillFitIntoOne) {
    EXPECT_EQ(wordsOf({0xF0, 1, 2, 3, 4, 5, 6, 0xF7}), (Words{{0x30060102, 0x03040506}}));
}

TEST(UniversalMidiPackets, TheSeventhByteMakesAnEnd) {
    EXPECT_EQ(wordsOf({0xF0, 1, 2, 3, 4, 5, 6, 7, 0xF7}),
              (Words{{0x30160102, 0x03040506}, {0x30310700, 0x00000000}}));
}

TEST(UniversalMidiPackets, TwelveBytesAreStartAndEnd) {
    EXPECT_EQ(wordsOf({0xF0, 0x52, 0, 0, 0x31, 0, 0x14, 0x1A, 0x03, 0x05, 0x09, 0x07, 0x02, 0xF7}),
              (Words{{0x30165200, 0x00310014}, {0x30361A03, 0x05090702}}));
}

TEST(UniversalMidiPackets, WhatLiesBetweenContinues) {
    EXPECT_EQ(
        wordsOf({0xF0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 0xF7}),
        (Words{{0x30160102, 0x03040506}, {0x30260708, 0x090A0B0C}, {0x30310D00, 0x00000000}}));
}

TEST(UniversalMidiPackets, AnEmptyMessageIsNoPacket) {
    EXPECT_EQ(wordsOf({0xF0, 0xF7}), Words{});
    EXPECT_EQ(wordsOf({0xF0}), Words{});
}

TEST(UniversalMidiPackets, OnlySystemExclusiveIsSent) {
    EXPECT_FALSE(MIDICommon::convertByteToPacket(std::vector<std::uint8_t>{0x90, 0x3C, 0x64}));
    EXPECT_FALSE(MIDICommon::convertByteToPacket({}));
}

// Whatever the last byte is.
TEST(UniversalMidiPackets, TheLastByteCountsAsTheEnd) {
    EXPECT_EQ(wordsOf({0xF0, 0x52, 0x33}), (Words{{0x30015200, 0x00000000}}));
}

TEST(UniversalMidiPackets, APacketTakesNoMoreThanItHolds) {
    const std::vector<std::uint8_t> bytes(40, 0x7F);
    const GLPacket packet = MIDICommon::createPackage(0x1F, 2, bytes);
    EXPECT_EQ(packet.data, (std::array<std::uint32_t, 2>{0x3F267F7F, 0x7F7F7F7F}));
}

TEST(UniversalMidiPackets, FieldsOfTheFirstWord) {
    constexpr std::uint32_t word = 0x3A257E00;
    EXPECT_EQ(MIDICommon::messageType(word), 3U);
    EXPECT_EQ(MIDICommon::messageGroup(word), 0xAU);
    EXPECT_EQ(MIDICommon::messageStatus(word), 2U);
    EXPECT_EQ(MIDICommon::messageChannel(word), 5U);
}

} // namespace
} // namespace deckmate
