#include "export/BwfWriter.h"

#include "support/Bytes.h"
#include "support/TemporaryFolder.h"

#include <fstream>
#include <gtest/gtest.h>
#include <string>

#include <unistd.h>

namespace deckmate {
namespace {

using namespace test;

/// Noon of 2026-03-04 in local time, whatever the zone.
std::chrono::system_clock::time_point noon() {
    std::tm local = {};
    local.tm_year = 126;
    local.tm_mon = 2;
    local.tm_mday = 4;
    local.tm_hour = 12;
    local.tm_isdst = -1;
    return std::chrono::system_clock::from_time_t(std::mktime(&local));
}

/// Bytes of address space that this process has taken.
std::uint64_t addressSpace() {
    std::ifstream statistics("/proc/self/statm");
    std::uint64_t pages = 0;
    statistics >> pages;
    EXPECT_GT(pages, 0U);
    return pages * static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE));
}

class BwfWriterTest : public testing::Test {
protected:
    BextChunkInfo bext;
    std::shared_ptr<WaveFileReader> reader =
        WaveFileReader::readFromData(recording(pcm24({1, 2, 3, 4})));

    BwfWriterTest() { bext.OriginationDateTime = noon(); }

    Bytes file(bool is24bit, const Bytes& samples) const {
        BwfWriter writer(reader.get(), bext, is24bit);
        writer.Write(samples.data(), static_cast<std::uint32_t>(samples.size()));
        writer.FixUpChunkSizes();
        return {writer.data().begin(), writer.data().end()};
    }

    static Bytes part(const Bytes& whole, std::ptrdiff_t offset, std::ptrdiff_t size) {
        return {whole.begin() + offset, whole.begin() + offset + size};
    }
};

TEST_F(BwfWriterTest, LaysOutTheWholeFile) {
    bext.Description = "Take 1";
    bext.Originator = "ORLO H8";
    bext.OriginatorReference = "REF";
    bext.UniqueMaterialIdentifier = "UMID";
    bext.TimeReference = 0x0123456789ABCDEF;
    bext.CodingHistory = "A=PCM";
    const Bytes samples = pcm24({0x010203, -1});
    const Bytes expected = text("RIFF") + le32(748 - 50 + 6 - 8) + text("WAVE") + //
                           text("JUNK") + le32(28) + zeros(28) +                  //
                           text("bext") + le32(608) + text("Take 1", 256) + text("ORLO H8", 32) +
                           text("REF", 32) + text("2026-03-04") + text("12:00:00") +
                           le64(0x0123456789ABCDEF) + le16(1) + text("UMID", 64) + zeros(190) +
                           text("A=PCM", 6) + //
                           text("fmt ") + le32(18) + le16(1) + le16(2) + le32(48000) +
                           le32(288000) + le16(6) + le16(24) + le16(0) + //
                           text("data") + le32(6) + samples;
    EXPECT_EQ(file(true, samples), expected);
}

TEST_F(BwfWriterTest, TheUsualHistoryPutsTheSamplesAt748) {
    bext.CodingHistory = "A=PCM,F=48000,W=24,M=stereo,T=H8;VERSION=1.00;MSRAW=OFF;";
    const Bytes whole = file(true, text("sample"));
    EXPECT_EQ(part(whole, 714, 4), text("fmt "));
    EXPECT_EQ(part(whole, 748, 6), text("sample"));
}

TEST_F(BwfWriterTest, FloatOutputDeclaresFloat) {
    const Bytes whole = file(false, {});
    EXPECT_EQ(part(whole, 658, 26), text("fmt ") + le32(18) + le16(3) + le16(2) + le32(48000) +
                                        le32(384000) + le16(8) + le16(32) + le16(0));
}

TEST_F(BwfWriterTest, ChannelsAndRateAreTheSources) {
    reader = WaveFileReader::readFromData(recording({}, {.channels = 1, .rate = 96000}));
    EXPECT_EQ(part(file(true, {}), 658, 26), text("fmt ") + le32(18) + le16(1) + le16(1) +
                                                 le32(96000) + le32(288000) + le16(3) + le16(24) +
                                                 le16(0));
}

// 65535 * 3 does not fit into the two bytes of the block align.
TEST_F(BwfWriterTest, OverlargeFieldsKeepTheirLowBytes) {
    reader = WaveFileReader::readFromData(recording({}, {.channels = 65535, .rate = 0xFFFFFFFF}));
    EXPECT_EQ(part(file(true, {}), 658, 26),
              text("fmt ") + le32(18) + le16(1) + le16(65535) + le32(0xFFFFFFFF) +
                  le32(static_cast<std::uint32_t>(-65533)) + le16(65533) + le16(24) + le16(0));
}

TEST_F(BwfWriterTest, WithoutReaderTheCopiedFieldsAreZero) {
    reader = nullptr;
    const Bytes whole = file(true, {});
    EXPECT_EQ(part(whole, 0, 12), le32(0) + le32(692 - 8) + le32(0));
    EXPECT_EQ(part(whole, 658, 26), text("fmt ") + le32(18) + le16(1) + le16(0) + le32(0) +
                                        le32(0) + le16(0) + le16(24) + le16(0));
}

TEST_F(BwfWriterTest, LongTextsAreCutToTheirFields) {
    bext.Description = std::string(300, 'd');
    bext.Originator = std::string(33, 'o');
    const Bytes whole = file(true, {});
    EXPECT_EQ(part(whole, 56, 256), text(std::string(256, 'd')));
    EXPECT_EQ(part(whole, 312, 32), text(std::string(32, 'o')));
    EXPECT_EQ(part(whole, 344, 32), zeros(32));
}

TEST_F(BwfWriterTest, EmptyTextsAreZeroBytes) {
    EXPECT_EQ(part(file(true, {}), 56, 256), zeros(256));
}

TEST_F(BwfWriterTest, TextsThatAsciiCantHoldAreEmpty) {
    bext.Description = "caf\xE9";
    bext.Originator = std::string(40, 'o') + "\x80"; // beyond the width, but part of the text
    bext.OriginatorReference = "control \x01 and \x7F";
    bext.CodingHistory = "\xFF";
    const Bytes whole = file(true, {});
    EXPECT_EQ(part(whole, 56, 288), zeros(288));
    EXPECT_EQ(part(whole, 344, 32), text("control \x01 and \x7F", 32));
    EXPECT_EQ(part(whole, 52, 4), le32(602));
    EXPECT_EQ(part(whole, 658, 4), text("fmt "));
}

TEST_F(BwfWriterTest, AnOddHistoryGetsAPadByteThatCounts) {
    bext.CodingHistory = "odd";
    const Bytes whole = file(true, {});
    EXPECT_EQ(part(whole, 52, 4), le32(606));
    EXPECT_EQ(part(whole, 658, 8), text("odd", 4) + text("fmt "));
}

TEST_F(BwfWriterTest, OddSampleBytesGetNoPadByte) {
    const Bytes whole = file(true, zeros(15));
    EXPECT_EQ(whole.size(), 692U + 15);
    EXPECT_EQ(part(whole, 688, 4), le32(15));
    EXPECT_EQ(part(whole, 4, 4), le32(692 + 15 - 8));
}

TEST_F(BwfWriterTest, SizesAreZeroUntilFixedUp) {
    BwfWriter writer(reader.get(), bext, true);
    writer.Write("abcdef", 6);
    Bytes whole(writer.data().begin(), writer.data().end());
    EXPECT_EQ(part(whole, 4, 4), le32(0));
    EXPECT_EQ(part(whole, writer.dataChunkSizePosition(), 4), le32(0));
    EXPECT_EQ(writer.dataChunkSizePosition(), 688U);
    EXPECT_EQ(writer.dataLength(), 6U);
}

TEST_F(BwfWriterTest, SamplesComeInTheOrderWritten) {
    BwfWriter writer(reader.get(), bext, true);
    for (const char* sample : {"abc", "def", "ghi", "jkl", "mno"}) {
        writer.Write(sample, 3);
    }
    writer.FixUpChunkSizes();
    const Bytes whole(writer.data().begin(), writer.data().end());
    EXPECT_EQ(part(whole, 688, 19), le32(15) + text("abcdefghijklmno"));
}

TEST_F(BwfWriterTest, SavesTheFile) {
    const TemporaryFolder folder;
    BwfWriter writer(reader.get(), bext, true);
    writer.FixUpChunkSizes();
    EXPECT_TRUE(writer.Save2File(folder / "a.WAV"));
    EXPECT_EQ(contentsOf(folder / "a.WAV"), file(true, {}));
}

TEST_F(BwfWriterTest, SamplesForATargetAreThereBeforeTheFileIsSaved) {
    const TemporaryFolder folder;
    BwfWriter writer(reader.get(), bext, true);
    writer.setTarget(folder / "a.WAV", {});
    writer.Write("abc", 3);
    writer.Write("defghi", 6);
    EXPECT_EQ(writer.data().size(), 692U);
    EXPECT_EQ(contentsOf(folder / "a.WAV").size(), 692U + 9);
    writer.FixUpChunkSizes();
    EXPECT_TRUE(writer.Save2File(folder / "a.WAV"));
    EXPECT_EQ(contentsOf(folder / "a.WAV"), file(true, text("abcdefghi")));
}

TEST_F(BwfWriterTest, ATargetIsWrittenWithoutSamplesToo) {
    const TemporaryFolder folder;
    BwfWriter writer(reader.get(), bext, true);
    writer.setTarget(folder / "a.WAV", {});
    EXPECT_TRUE(writer.expectSamples(0));
    writer.Write("", 0);
    EXPECT_FALSE(std::filesystem::exists(folder / "a.WAV"));
    writer.FixUpChunkSizes();
    EXPECT_TRUE(writer.Save2File(folder / "a.WAV"));
    EXPECT_EQ(contentsOf(folder / "a.WAV"), file(true, {}));
}

TEST_F(BwfWriterTest, ATargetThatCantBeWrittenTakesNoSamples) {
    const TemporaryFolder folder;
    BwfWriter writer(reader.get(), bext, true);
    writer.setTarget(folder / "missing" / "a.WAV", {});
    EXPECT_TRUE(writer.expectSamples(3));
    writer.Write("abc", 3);
    EXPECT_EQ(writer.dataLength(), 0U);
    writer.FixUpChunkSizes();
    EXPECT_FALSE(writer.Save2File(folder / "missing" / "a.WAV"));
}

TEST_F(BwfWriterTest, MoreThanATargetCouldHoldIsRefusedBeforeItIsOpened) {
    const TemporaryFolder folder;
    BwfWriter writer(reader.get(), bext, true);
    writer.setTarget(folder.file("a.WAV", text("there")), {});
    EXPECT_FALSE(writer.expectSamples(0xFFFFFFFF));
    writer.Write("abc", 3);
    EXPECT_FALSE(writer.Save2File(folder / "a.WAV"));
    EXPECT_EQ(contentsOf(folder / "a.WAV"), text("there"));
}

TEST_F(BwfWriterTest, FewerSamplesThanExpectedMakeAShorterFile) {
    const TemporaryFolder folder;
    BwfWriter writer(reader.get(), bext, true);
    writer.setTarget(folder / "a.WAV", {});
    EXPECT_TRUE(writer.expectSamples(1000));
    writer.Write("abc", 3);
    writer.FixUpChunkSizes();
    EXPECT_TRUE(writer.Save2File(folder / "a.WAV"));
    EXPECT_EQ(contentsOf(folder / "a.WAV"), file(true, text("abc")));
}

TEST_F(BwfWriterTest, WhatCantBeSavedSaysSo) {
    const TemporaryFolder folder;
    BwfWriter writer(reader.get(), bext, true);
    EXPECT_FALSE(writer.Save2File(folder / "missing" / "a.WAV"));
}

// Bytes that no 32-bit size can count are refused before anything is written.
TEST_F(BwfWriterTest, SamplesBeyond32BitSizesAreRefused) {
    const TemporaryFolder folder;
    constexpr std::uint64_t headerBytes = 692;
    constexpr std::uint64_t largest = 0xFFFFFFFF - (headerBytes - 8);
    EXPECT_TRUE(BwfWriter(reader.get(), bext, true).expectSamples(largest));
    BwfWriter writer(reader.get(), bext, true);
    EXPECT_FALSE(writer.expectSamples(largest + 1));
    writer.FixUpChunkSizes();
    EXPECT_FALSE(writer.Save2File(folder / "a.WAV"));
    EXPECT_FALSE(std::filesystem::exists(folder / "a.WAV"));
}

TEST_F(BwfWriterTest, OnceBytesAreMissingNothingMoreIsTaken) {
    BwfWriter writer(reader.get(), bext, true);
    EXPECT_FALSE(writer.expectSamples(std::uint64_t{1} << 40));
    writer.Write("abc", 3);
    EXPECT_EQ(writer.dataLength(), 0U);
}

TEST_F(BwfWriterTest, ADataChunkThatClaimsFourGigabytesTakesNoMemoryForThem) {
    reader = WaveFileReader::readFromData(
        riff(chunk("fmt ", formatBody({})) + chunk("data", zeros(100), 0xFFFFFF00)));
    ASSERT_EQ(reader->header().dataChunkLength, 0xFFFFFF00U);
    const std::uint64_t before = addressSpace();
    const BwfWriter writer(reader.get(), bext, true);
    EXPECT_LT(addressSpace() - before, 0x10000000U);
}

TEST_F(BwfWriterTest, DisposeReleasesTheFile) {
    BwfWriter writer(reader.get(), bext, true);
    writer.dispose();
    writer.dispose();
    EXPECT_TRUE(writer.data().empty());
}

TEST_F(BwfWriterTest, NothingIsSavedAfterDispose) {
    const TemporaryFolder folder;
    BwfWriter writer(reader.get(), bext, true);
    writer.dispose();
    writer.Write("abc", 3);
    writer.FixUpChunkSizes();
    EXPECT_FALSE(writer.Save2File(folder / "a.WAV"));
    EXPECT_FALSE(std::filesystem::exists(folder / "a.WAV"));
}

TEST(BwfWriterIdentifiers, FourCharactersArePackedFirstLow) {
    EXPECT_EQ(BwfWriter::stringToInt32("data"), 0x61746164U);
    EXPECT_EQ(BwfWriter::stringToInt32("fmt "), 0x20746D66U);
}

TEST(BwfWriterIdentifiers, OtherLengthsAreZero) {
    for (const char* wrong : {"", "dat", "data "}) {
        EXPECT_EQ(BwfWriter::stringToInt32(wrong), 0U);
    }
}

} // namespace
} // namespace deckmate
