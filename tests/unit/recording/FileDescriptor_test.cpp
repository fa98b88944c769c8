#include "recording/FileDescriptor.h"

#include "support/TemporaryFolder.h"

#include <cerrno>
#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>

namespace deckmate {
namespace {

using test::TemporaryFolder;

class FileDescriptorTest : public testing::Test {
protected:
    TemporaryFolder folder;
};

TEST_F(FileDescriptorTest, KnowsTheSizeOfARegularFile) {
    const FileDescriptor file(folder.file("a", test::zeros(7)), O_RDONLY);
    EXPECT_EQ(file.regularSize(), 7U);
}

TEST_F(FileDescriptorTest, OtherKindsHaveNoSize) {
    EXPECT_EQ(FileDescriptor(folder.path(), O_RDONLY).regularSize(), std::nullopt);
    EXPECT_EQ(FileDescriptor("/dev/null", O_RDONLY).regularSize(), std::nullopt);
}

TEST_F(FileDescriptorTest, AMissingFileIsNotOpenAndSaysWhy) {
    const FileDescriptor file(folder / "missing", O_RDONLY);
    EXPECT_EQ(errno, ENOENT);
    EXPECT_FALSE(file.isOpen());
}

TEST_F(FileDescriptorTest, APipeWithoutAnotherEndDoesNotHoldUp) {
    ASSERT_EQ(mkfifo((folder / "pipe").c_str(), 0600), 0);
    EXPECT_TRUE(FileDescriptor(folder / "pipe", O_RDONLY).isOpen());
    EXPECT_FALSE(FileDescriptor(folder / "pipe", O_WRONLY).isOpen());
}

TEST_F(FileDescriptorTest, KnowsItselfUnderEveryName) {
    const auto path = folder.file("a", {});
    std::filesystem::create_hard_link(path, folder / "b");
    const FileDescriptor file(path, O_RDONLY);
    EXPECT_TRUE(file.isFileAt(folder / "b"));
    EXPECT_FALSE(file.isFileAt(folder.file("c", {})));
    EXPECT_FALSE(file.isFileAt(folder / "missing"));
    EXPECT_FALSE(file.isFileAt(""));
}

TEST_F(FileDescriptorTest, TellsWhatElseIsThere) {
    EXPECT_TRUE(isOtherThanRegular(folder.path()));
    EXPECT_TRUE(isOtherThanRegular("/dev/null"));
    EXPECT_FALSE(isOtherThanRegular(folder.file("a", {})));
    EXPECT_FALSE(isOtherThanRegular(folder / "missing"));
}

TEST_F(FileDescriptorTest, IsNotInherited) {
    const FileDescriptor file(folder.file("a", {}), O_RDONLY);
    EXPECT_EQ(fcntl(file.number(), F_GETFD), FD_CLOEXEC);
}

TEST_F(FileDescriptorTest, IsClosedAtTheEnd) {
    int number = -1;
    {
        const FileDescriptor file(folder.file("a", {}), O_RDONLY);
        number = file.number();
        ASSERT_GE(number, 0);
    }
    EXPECT_EQ(fcntl(number, F_GETFD), -1);
}

TEST_F(FileDescriptorTest, ClosesOnce) {
    FileDescriptor file(folder.file("a", {}), O_RDONLY);
    EXPECT_TRUE(file.close());
    EXPECT_FALSE(file.isOpen());
}

} // namespace
} // namespace deckmate
