#include "platform/AudioFile.h"

#include "support/TemporaryFolder.h"

#include <array>
#include <filesystem>
#include <gtest/gtest.h>
#include <memory>
#include <string_view>

#include <sys/stat.h>

namespace deckmate {
namespace {

using namespace test;

class AudioFileTest : public testing::Test {
protected:
    TemporaryFolder folder;
    std::unique_ptr<AudioFile> file;
    std::array<std::uint8_t, 60> room = {};

    AudioStatus open(const Bytes& bytes) {
        return AudioFile::open(folder.file("a.wav", bytes), file);
    }
};

TEST_F(AudioFileTest, TellsTheFormat) {
    ASSERT_EQ(open(evenRecording(pcm24({1, 2, 3, 4, 5, 6}))), 0);
    const StreamDescription format = file->dataFormat();
    EXPECT_EQ(format.sampleRate, 48000);
    EXPECT_EQ(format.formatId, 0x6C70636DU); // "lpcm"
    EXPECT_EQ(format.channelsPerFrame, 2U);
    EXPECT_EQ(format.bitsPerChannel, 24U);
    EXPECT_EQ(format.bytesPerPacket, 6U);
    EXPECT_EQ(format.framesPerPacket, 1U);
    EXPECT_FALSE(format.isFloat());
    EXPECT_EQ(file->packetCount(), 3U);
    EXPECT_EQ(file->estimatedDuration(), 3 / 48000.0);
    EXPECT_EQ(file->packetSizeUpperBound(), 6U);
    EXPECT_TRUE(file->magicCookie().empty());
}

TEST_F(AudioFileTest, FloatsAreMarkedSo) {
    ASSERT_EQ(open(evenRecording(floats({0.5F, 1}), {.tag = 3, .bits = 32})), 0);
    EXPECT_TRUE(file->dataFormat().isFloat());
}

TEST_F(AudioFileTest, BitsThatAreNotUsedDontCount) {
    const Bytes twentyInThreeBytes =
        le16(1) + le16(2) + le32(48000) + le32(288000) + le16(6) + le16(20);
    ASSERT_EQ(open(riff(chunk("fmt ", twentyInThreeBytes) + chunk("data", zeros(12)))), 0);
    EXPECT_EQ(file->dataFormat().bitsPerChannel, 20U);
    EXPECT_EQ(file->dataFormat().bytesPerFrame, 6U);
    EXPECT_EQ(file->packetCount(), 2U);
}

TEST_F(AudioFileTest, GivesTheFilesOwnBytes) {
    ASSERT_EQ(open(evenRecording(pcm24({0x010203, -1, 5, 6, 7, 8}))), 0);
    const AudioFile::Packets read = file->readPackets(0, 2, room);
    EXPECT_EQ(read.status, 0);
    EXPECT_EQ(read.packets, 2U);
    ASSERT_EQ(read.bytes, 12U);
    EXPECT_EQ(Bytes(room.begin(), room.begin() + 12), pcm24({0x010203, -1, 5, 6}));
}

TEST_F(AudioFileTest, ReadsFromAnyPacketToTheEnd) {
    ASSERT_EQ(open(evenRecording(pcm24({1, 2, 3, 4, 5, 6}))), 0);
    const AudioFile::Packets read = file->readPackets(2, 100, room);
    EXPECT_EQ(read.packets, 1U);
    EXPECT_EQ(Bytes(room.begin(), room.begin() + 6), pcm24({5, 6}));
}

TEST_F(AudioFileTest, ThereIsNothingAtTheEnd) {
    ASSERT_EQ(open(evenRecording(pcm24({1, 2}))), 0);
    const AudioFile::Packets read = file->readPackets(1, 100, room);
    EXPECT_EQ(read.status, 0);
    EXPECT_EQ(read.packets, 0U);
}

TEST_F(AudioFileTest, APacketBeforeTheBeginningIsAnError) {
    ASSERT_EQ(open(evenRecording(pcm24({1, 2}))), 0);
    EXPECT_NE(file->readPackets(-1, 1, room).status, 0);
}

TEST_F(AudioFileTest, NoMoreIsReadThanThereIsRoomFor) {
    ASSERT_EQ(open(evenRecording(zeros(600))), 0);
    EXPECT_EQ(file->readPackets(0, 100, room).packets, 10U);
}

TEST_F(AudioFileTest, AFileCutShortEndsThereWithoutAnError) {
    const Bytes bytes = evenRecording(pcm24({1, 2, 3, 4, 5, 6}));
    ASSERT_EQ(open(bytes), 0);
    std::filesystem::resize_file(folder / "a.wav", bytes.size() - 8);
    const AudioFile::Packets read = file->readPackets(0, 3, room);
    EXPECT_EQ(read.status, 0);
    EXPECT_EQ(read.packets, 1U);
    EXPECT_EQ(file->readPackets(2, 1, room).packets, 0U);
}

TEST_F(AudioFileTest, ADeletedFileIsReadOn) {
    ASSERT_EQ(open(evenRecording(pcm24({1, 2}))), 0);
    std::filesystem::remove(folder / "a.wav");
    EXPECT_EQ(file->readPackets(0, 1, room).packets, 1U);
}

TEST_F(AudioFileTest, OtherFilesAreRefused) {
    EXPECT_NE(open(text("no sound at all")), 0);
    EXPECT_EQ(file, nullptr);
    EXPECT_NE(open({}), 0);
    EXPECT_NE(open(evenRecording({}, {.channels = 0})), 0);
}

TEST_F(AudioFileTest, WhatIsNoFileIsRefused) {
    EXPECT_NE(AudioFile::open(folder / "missing.wav", file), 0);
    EXPECT_NE(AudioFile::open(folder.path(), file), 0);
    ASSERT_EQ(mkfifo((folder / "pipe.wav").c_str(), 0600), 0);
    EXPECT_NE(AudioFile::open(folder / "pipe.wav", file), 0);
}

} // namespace
} // namespace deckmate
