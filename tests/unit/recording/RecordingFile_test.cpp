#include "recording/RecordingFile.h"

#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

namespace deckmate {
namespace {

using test::Bytes;
using test::TemporaryFolder;

class RecordingFileTest : public testing::Test {
protected:
    TemporaryFolder folder;
};

TEST_F(RecordingFileTest, ReadsEveryByte) {
    const Bytes bytes = test::text("some bytes, not a recording");
    const LoadedFile loaded = readWholeFile(folder.file("take.wav", bytes));
    EXPECT_EQ(Bytes(loaded.bytes.bytes(), loaded.bytes.bytes() + loaded.bytes.length()), bytes);
    EXPECT_EQ(loaded.error, "");
}

TEST_F(RecordingFileTest, AMissingFileGivesNoBytes) {
    const LoadedFile loaded = readWholeFile(folder / "nothing");
    EXPECT_EQ(loaded.bytes.length(), 0U);
    EXPECT_EQ(loaded.error, "No such file or directory");
}

TEST_F(RecordingFileTest, AnEmptyFileGivesNoBytes) {
    EXPECT_EQ(readWholeFile(folder.file("empty.wav", {})).error, "Empty file");
}

TEST_F(RecordingFileTest, AFolderGivesNoBytes) {
    EXPECT_EQ(readWholeFile(folder.path()).error, "Not a regular file");
}

// Opening it would wait for a writer.
TEST_F(RecordingFileTest, APipeGivesNoBytesAtOnce) {
    ASSERT_EQ(mkfifo((folder / "pipe.wav").c_str(), 0600), 0);
    EXPECT_EQ(readWholeFile(folder / "pipe.wav").error, "Not a regular file");
}

TEST_F(RecordingFileTest, ADeviceGivesNoBytes) {
    EXPECT_EQ(readWholeFile("/dev/zero").error, "Not a regular file");
}

TEST_F(RecordingFileTest, ALinkIsFollowed) {
    folder.file("take.wav", test::text("bytes"));
    std::filesystem::create_symlink("take.wav", folder / "link.wav");
    EXPECT_EQ(readWholeFile(folder / "link.wav").bytes.length(), 5U);
}

TEST_F(RecordingFileTest, AFileBeyond32BitOffsetsGivesNoBytes) {
    const auto path = folder.file("sparse.wav", test::text("RIFF"));
    std::filesystem::resize_file(path, std::uintmax_t{1} << 32);
    EXPECT_EQ(readWholeFile(path).error, "File too large for 32-bit offsets");
}

} // namespace
} // namespace deckmate
