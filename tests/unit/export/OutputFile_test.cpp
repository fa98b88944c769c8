#include "export/OutputFile.h"

#include "support/TemporaryFolder.h"

#include <csignal>
#include <gtest/gtest.h>
#include <limits>
#include <string>

#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

namespace deckmate {
namespace {

using namespace test;

class OutputFileTest : public testing::Test {
protected:
    TemporaryFolder folder;
};

TEST_F(OutputFileTest, WritesEveryByte) {
    const Bytes bytes = text("all of it");
    EXPECT_TRUE(writeWholeFile(folder / "a.WAV", bytes));
    EXPECT_EQ(contentsOf(folder / "a.WAV"), bytes);
}

TEST_F(OutputFileTest, WritesAnEmptyFile) {
    EXPECT_TRUE(writeWholeFile(folder / "a.WAV", {}));
    EXPECT_TRUE(std::filesystem::exists(folder / "a.WAV"));
}

// Whoever watches or has opened the file goes on with the same one.
TEST_F(OutputFileTest, OverwritesALargerFileInPlace) {
    const auto path = folder.file("a.WAV", zeros(1000));
    struct stat before = {};
    ASSERT_EQ(stat(path.c_str(), &before), 0);
    EXPECT_TRUE(writeWholeFile(path, text("short")));
    struct stat after = {};
    ASSERT_EQ(stat(path.c_str(), &after), 0);
    EXPECT_EQ(contentsOf(path), text("short"));
    EXPECT_EQ(before.st_ino, after.st_ino);
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.path()), {}), 1);
}

TEST_F(OutputFileTest, WritesThroughALink) {
    folder.file("a.WAV", zeros(10));
    std::filesystem::create_symlink("a.WAV", folder / "link.WAV");
    EXPECT_TRUE(writeWholeFile(folder / "link.WAV", text("new")));
    EXPECT_EQ(contentsOf(folder / "a.WAV"), text("new"));
}

TEST_F(OutputFileTest, AFileThatMustNotBeTouchedIsNot) {
    const auto path = folder.file("a.WAV", text("precious"));
    std::filesystem::create_hard_link(path, folder / "b.WAV");
    EXPECT_FALSE(writeWholeFile(folder / "b.WAV", text("x"), {.untouchable = path}));
    EXPECT_EQ(contentsOf(path), text("precious"));
    EXPECT_TRUE(writeWholeFile(folder / "c.WAV", text("x"), {.untouchable = path}));
}

TEST_F(OutputFileTest, AppendsAndRewritesTheStart) {
    OutputFile file(folder.file("a.WAV", zeros(10)), {});
    file.append(text("head"));
    file.append(text("tail"));
    file.rewriteStart(text("HE"));
    EXPECT_TRUE(file.close());
    EXPECT_EQ(contentsOf(folder / "a.WAV"), text("HEadtail"));
}

TEST_F(OutputFileTest, AnExpectedSizeIsNotTheSize) {
    OutputFile file(folder / "a.WAV", {});
    file.expectSize(1000000);
    file.append(text("short"));
    EXPECT_TRUE(file.close());
    EXPECT_EQ(contentsOf(folder / "a.WAV"), text("short"));
}

// A volume that could never hold the file is told by the writes, not by the hint.
TEST_F(OutputFileTest, AnImpossibleSizeIsStillOnlyExpected) {
    OutputFile file(folder / "a.WAV", {});
    file.expectSize(std::numeric_limits<std::int64_t>::max());
    file.append(text("short"));
    EXPECT_TRUE(file.close());
    EXPECT_EQ(contentsOf(folder / "a.WAV"), text("short"));
}

TEST_F(OutputFileTest, OnlyANewFileIsWrittenWhereNothingMayBeOverwritten) {
    const auto path = folder.file("a.WAV", text("there"));
    EXPECT_FALSE(writeWholeFile(path, text("x"), {.untouchable = {}, .mayOverwrite = false}));
    EXPECT_EQ(contentsOf(path), text("there"));
    EXPECT_TRUE(
        writeWholeFile(folder / "b.WAV", text("x"), {.untouchable = {}, .mayOverwrite = false}));
}

TEST_F(OutputFileTest, FailsInAMissingFolder) {
    EXPECT_FALSE(writeWholeFile(folder / "missing" / "a.WAV", text("x")));
}

TEST_F(OutputFileTest, FailsOnAFolder) {
    EXPECT_FALSE(writeWholeFile(folder.path(), text("x")));
}

TEST_F(OutputFileTest, FailsForANameTooLong) {
    EXPECT_FALSE(writeWholeFile(folder / std::string(256, 'a'), text("x")));
    EXPECT_TRUE(writeWholeFile(folder / std::string(255, 'a'), text("x")));
}

TEST_F(OutputFileTest, FailsOnAPipeWithoutWaiting) {
    ASSERT_EQ(mkfifo((folder / "pipe").c_str(), 0600), 0);
    EXPECT_FALSE(writeWholeFile(folder / "pipe", text("x")));
}

TEST_F(OutputFileTest, FailsOnDevices) {
    EXPECT_FALSE(writeWholeFile("/dev/full", text("x")));
    EXPECT_FALSE(writeWholeFile("/dev/null", text("x")));
}

/// Limits the size of files that this process writes.
class FileSizeLimit {
public:
    explicit FileSizeLimit(rlim_t size) {
        getrlimit(RLIMIT_FSIZE, &before_);
        const rlimit limit{size, before_.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FileSizeLimit() { setrlimit(RLIMIT_FSIZE, &before_); }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;
    FileSizeLimit(FileSizeLimit&&) = delete;
    FileSizeLimit& operator=(FileSizeLimit&&) = delete;

private:
    rlimit before_ = {};
};

// The signal for it would end the process.
TEST_F(OutputFileTest, AFileSizeLimitIsAFailureAndNoSignal) {
    ASSERT_EQ(std::signal(SIGXFSZ, SIG_DFL), SIG_DFL);
    {
        const FileSizeLimit limit(1000);
        EXPECT_FALSE(writeWholeFile(folder / "a.WAV", zeros(1001)));
        EXPECT_TRUE(writeWholeFile(folder / "b.WAV", zeros(1000)));
    }
    sigset_t pending = {};
    sigpending(&pending);
    EXPECT_EQ(sigismember(&pending, SIGXFSZ), 0);
    EXPECT_EQ(contentsOf(folder / "a.WAV"), zeros(1000)); // what was written stays
}

TEST_F(OutputFileTest, NothingIsWrittenBehindAFailure) {
    const FileSizeLimit limit(1000);
    OutputFile file(folder / "a.WAV", {});
    file.append(zeros(1001));
    EXPECT_FALSE(file.isGood());
    file.rewriteStart(text("late"));
    EXPECT_FALSE(file.close());
    EXPECT_EQ(contentsOf(folder / "a.WAV"), zeros(1000));
}

TEST_F(OutputFileTest, ABlockedSignalStaysBlocked) {
    sigset_t fileSize = {};
    sigemptyset(&fileSize);
    sigaddset(&fileSize, SIGXFSZ);
    sigset_t before = {};
    pthread_sigmask(SIG_BLOCK, &fileSize, &before);
    writeWholeFile(folder / "a.WAV", text("x"));
    sigset_t after = {};
    pthread_sigmask(SIG_SETMASK, &before, &after);
    EXPECT_EQ(sigismember(&after, SIGXFSZ), 1);
}

} // namespace
} // namespace deckmate
