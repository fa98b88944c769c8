#include "platform/qt/QtUserDefaults.h"

#include "support/Bytes.h"
#include "support/TemporaryFolder.h"

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace deckmate {
namespace {

using test::Bytes;
using test::TemporaryFolder;

constexpr std::string_view key = "UD_LAST_OPEN_FOLDER";

/// Sets or removes a variable of the environment for one test.
class Environment {
public:
    Environment(const char* name, const char* value) : name_(name) {
        if (const char* const before = std::getenv(name); before != nullptr) {
            before_ = before;
        }
        set(value);
    }
    ~Environment() { set(before_ ? before_->c_str() : nullptr); }
    Environment(const Environment&) = delete;
    Environment& operator=(const Environment&) = delete;
    Environment(Environment&&) = delete;
    Environment& operator=(Environment&&) = delete;

private:
    void set(const char* value) const {
        value != nullptr ? setenv(name_, value, 1) : unsetenv(name_);
    }

    const char* name_;
    std::optional<std::string> before_;
};

class QtUserDefaultsTest : public testing::Test {
protected:
    /// Stored by one object, read from the file by another.
    std::optional<std::string> roundTrip(std::string_view value) const {
        QtUserDefaults(file_).setString(value, key);
        return QtUserDefaults(file_).stringForKey(key);
    }
    /// What is read under the key from a file with these lines.
    std::optional<std::string> valueIn(std::string_view lines) const {
        folder_.file("settings.ini", Bytes(lines.begin(), lines.end()));
        return QtUserDefaults(file_).stringForKey(key);
    }
    std::string fileText() const {
        const Bytes bytes = test::contentsOf(file_);
        return {bytes.begin(), bytes.end()};
    }

    TemporaryFolder folder_;
    std::filesystem::path file_ = folder_ / "settings.ini";
};

TEST_F(QtUserDefaultsTest, AreTheStandardOnes) {
    const QtUserDefaults defaults(file_);
    EXPECT_EQ(&UserDefaults::standard(), &defaults);
}

TEST_F(QtUserDefaultsTest, AFreshUserHasNoValues) {
    EXPECT_EQ(QtUserDefaults(file_).stringForKey(key), std::nullopt);
}

TEST_F(QtUserDefaultsTest, ReadingMakesNoFile) {
    QtUserDefaults(file_).stringForKey(key);
    EXPECT_FALSE(std::filesystem::exists(file_));
}

TEST_F(QtUserDefaultsTest, AStoredValueComesBackInTheSameRun) {
    QtUserDefaults defaults(file_);
    defaults.setString("/home/ann/Takes", key);
    EXPECT_EQ(defaults.stringForKey(key), "/home/ann/Takes");
}

TEST_F(QtUserDefaultsTest, AStoredValueComesBackInTheNextRun) {
    EXPECT_EQ(roundTrip("/home/ann/Takes"), "/home/ann/Takes");
}

TEST_F(QtUserDefaultsTest, AValueReplacesTheEarlierOne) {
    EXPECT_EQ(roundTrip("a much longer value than the next"), "a much longer value than the next");
    EXPECT_EQ(roundTrip("short"), "short");
}

TEST_F(QtUserDefaultsTest, AValueThatIsThereAlreadyIsNotSavedAgain) {
    QtUserDefaults defaults(file_);
    defaults.setString("/home/ann/Takes", key);
    const auto inode = [&] {
        struct stat status = {};
        EXPECT_EQ(stat(file_.c_str(), &status), 0);
        return status.st_ino;
    };
    const std::filesystem::path first = folder_ / "first.ini";
    std::filesystem::create_hard_link(file_, first); // so that its inode can't be another's
    const ino_t before = inode();
    defaults.setString("/home/ann/Takes", key);
    EXPECT_EQ(inode(), before);
    defaults.setString("/home/ann/Other", key);
    EXPECT_NE(inode(), before) << "saving should replace the file";
}

TEST_F(QtUserDefaultsTest, WhatAnotherProgramStoredMeanwhileIsReplaced) {
    QtUserDefaults defaults(file_);
    defaults.setString("/home/ann/Takes", key);
    std::ofstream(file_) << "[General]\nUD_LAST_OPEN_FOLDER=/home/ben/a longer name\n";
    defaults.setString("/home/ann/Takes", key);
    EXPECT_EQ(fileText(), "[General]\nUD_LAST_OPEN_FOLDER=/home/ann/Takes\n");
}

TEST_F(QtUserDefaultsTest, APlainValueIsReadableInTheFile) {
    roundTrip("/home/ann/Takes");
    EXPECT_EQ(fileText(), "[General]\nUD_LAST_OPEN_FOLDER=/home/ann/Takes\n");
}

TEST_F(QtUserDefaultsTest, AnyTextComesBackTheSame) {
    for (const std::string_view value : {"",
                                         " ",
                                         " both ends ",
                                         "a, b",
                                         ",",
                                         "\"quoted\"",
                                         "semi;colon",
                                         "# no comment",
                                         "a=b",
                                         "[General]",
                                         "@",
                                         "@Invalid()",
                                         "@ByteArray(x)",
                                         "@Variant(x)",
                                         "@@",
                                         "\\",
                                         "\\n",
                                         "C:\\x41",
                                         "%41",
                                         "%%",
                                         "line\nbreak",
                                         "carriage\rreturn",
                                         "\ttab",
                                         "true",
                                         "10",
                                         "/home/j\xc3\xbcrgen/\xe6\xbc\xa2",
                                         "\xff\xfe no text",
                                         "\xc3",
                                         "\x7f"}) {
        EXPECT_EQ(roundTrip(value), value);
    }
}

TEST_F(QtUserDefaultsTest, EveryByteComesBackTheSame) {
    std::string value;
    for (int byte = 0; byte < 256; ++byte) {
        value.push_back(static_cast<char>(byte));
        value.push_back('1'); // what an escaped byte must not swallow
    }
    EXPECT_EQ(roundTrip(value), value);
}

TEST_F(QtUserDefaultsTest, ALongValueComesBackTheSame) {
    std::string value;
    for (int i = 0; i < 10'000; ++i) {
        value.push_back(static_cast<char>(i * 7));
    }
    EXPECT_EQ(roundTrip(value), value);
}

TEST_F(QtUserDefaultsTest, AnyKeyIsAKeyOfItsOwn) {
    const std::vector<std::string_view> keys = {
        "",          "a",        "A",        "a/b",      "a//b",
        "/a",        "a/",       "General",  "%",        " ",
        "a\nb",      "\xff\xfe", "\xc3\xbc", "a=b",      "[a]",
        "General/a", "a%2Fb",    "%25",      "%General", std::string_view("\0", 1)};
    {
        QtUserDefaults defaults(file_);
        for (std::size_t i = 0; i < keys.size(); ++i) {
            defaults.setString(std::to_string(i), keys[i]);
        }
    }
    const QtUserDefaults defaults(file_);
    for (std::size_t i = 0; i < keys.size(); ++i) {
        EXPECT_EQ(defaults.stringForKey(keys[i]), std::to_string(i)) << keys[i];
    }
}

TEST_F(QtUserDefaultsTest, StoringKeepsTheOtherValues) {
    roundTrip("kept");
    QtUserDefaults(file_).setString("1.0.1", "UD_DO_NOT_SHOW_AGAIN");
    EXPECT_EQ(QtUserDefaults(file_).stringForKey(key), "kept");
}

TEST_F(QtUserDefaultsTest, AValueSurvivesAKillRightAfterTheCall) {
    const pid_t child = fork();
    if (child == 0) {
        QtUserDefaults defaults(file_);
        defaults.setString("/home/ann/Takes", key);
        kill(getpid(), SIGKILL);
    }
    int status = 0;
    waitpid(child, &status, 0);
    ASSERT_TRUE(WIFSIGNALED(status));
    ASSERT_EQ(WTERMSIG(status), SIGKILL);
    EXPECT_EQ(QtUserDefaults(file_).stringForKey(key), "/home/ann/Takes");
}

TEST_F(QtUserDefaultsTest, ThreadsMayStoreAndReadAtTheSameTime) {
    QtUserDefaults defaults(file_);
    std::vector<std::thread> threads;
    for (const std::string_view name : {"one", "other"}) {
        threads.emplace_back([&defaults, name] {
            for (int i = 0; i < 10; ++i) {
                defaults.setString(std::to_string(i), name);
                EXPECT_EQ(defaults.stringForKey(name), std::to_string(i));
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

// What is in the way

TEST_F(QtUserDefaultsTest, AValueThatSomeoneWroteByHandIsRead) {
    EXPECT_EQ(valueIn("[General]\r\n; mine\r\nUD_LAST_OPEN_FOLDER = /mnt/takes\r\n"), "/mnt/takes");
}

TEST_F(QtUserDefaultsTest, AListIsNoValue) {
    EXPECT_EQ(valueIn("[General]\nUD_LAST_OPEN_FOLDER=a, b\n"), std::nullopt);
}

TEST_F(QtUserDefaultsTest, OtherKindsOfValuesAreNoValue) {
    for (const std::string_view value :
         {"@Rect(1 2 3 4)", "@Point(1 2)", "@Size(1 2)", "@Invalid()", "@Variant(garbage)",
          "@Variant(\\0\\0\\0\\x2\\0\\0\\0\\x1)", "@DateTime(x)"}) {
        std::string lines = "[General]\nUD_LAST_OPEN_FOLDER=";
        EXPECT_EQ(valueIn(lines.append(value).append("\n")), std::nullopt) << value;
    }
}

TEST_F(QtUserDefaultsTest, AnEmptyFileHasNoValues) {
    EXPECT_EQ(valueIn(""), std::nullopt);
}

TEST_F(QtUserDefaultsTest, AFileOfGarbageHasNoValuesAndTakesNewOnes) {
    std::string garbage;
    for (unsigned i = 0; i < 100'000; ++i) {
        garbage.push_back(static_cast<char>((i * i) >> 3));
    }
    EXPECT_EQ(valueIn(garbage), std::nullopt);
    EXPECT_EQ(roundTrip("new"), "new");
}

TEST_F(QtUserDefaultsTest, AFileThatEndsInTheMiddleIsReadAsFarAsItGoes) {
    EXPECT_EQ(valueIn("[General]\nUD_LAST_OPEN_FOLDER=/mnt/ta"), "/mnt/ta");
    EXPECT_EQ(valueIn("[General]\nUD_LAST_OPEN_FOLDER"), std::nullopt);
    EXPECT_EQ(valueIn("[Gener"), std::nullopt);
    EXPECT_EQ(valueIn("\\x"), std::nullopt);
}

TEST_F(QtUserDefaultsTest, AMissingFolderIsMade) {
    file_ = folder_ / "not" / "there" / "settings.ini";
    EXPECT_EQ(roundTrip("value"), "value");
}

TEST_F(QtUserDefaultsTest, APathBelowAFileHoldsNothing) {
    folder_.file("file", {});
    file_ = folder_ / "file" / "settings.ini";
    EXPECT_EQ(roundTrip("value"), std::nullopt);
}

TEST_F(QtUserDefaultsTest, WhatCantBeStoredLastsForTheRun) {
    folder_.file("file", {});
    QtUserDefaults defaults(folder_ / "file" / "settings.ini");
    defaults.setString("value", key);
    EXPECT_EQ(defaults.stringForKey(key), "value");
}

TEST_F(QtUserDefaultsTest, AFolderInPlaceOfTheFileHoldsNothing) {
    std::filesystem::create_directory(file_);
    EXPECT_EQ(roundTrip("value"), std::nullopt);
    EXPECT_TRUE(std::filesystem::is_directory(file_));
}

TEST_F(QtUserDefaultsTest, APipeInPlaceOfTheFileIsNotWaitedFor) {
    ASSERT_EQ(mkfifo(file_.c_str(), 0600), 0);
    EXPECT_EQ(roundTrip("value"), std::nullopt);
    EXPECT_TRUE(std::filesystem::is_fifo(file_));
}

TEST_F(QtUserDefaultsTest, ALinkToADeviceIsLeftAlone) {
    std::filesystem::create_symlink("/dev/null", file_);
    EXPECT_EQ(roundTrip("value"), std::nullopt);
    EXPECT_TRUE(std::filesystem::is_character_file("/dev/null"));
}

TEST_F(QtUserDefaultsTest, ALinkIsFollowed) {
    std::filesystem::create_symlink(folder_ / "target.ini", file_);
    EXPECT_EQ(roundTrip("value"), "value");
    EXPECT_TRUE(std::filesystem::is_symlink(file_));
}

// The usual place

TEST_F(QtUserDefaultsTest, LieInTheConfigurationFolder) {
    const Environment configuration("XDG_CONFIG_HOME", (folder_ / "config").c_str());
    QtUserDefaults().setString("value", key);
    EXPECT_TRUE(std::filesystem::exists(folder_ / "config" / "orlo-h8-deckmate.ini"));
    EXPECT_EQ(QtUserDefaults().stringForKey(key), "value");
}

TEST_F(QtUserDefaultsTest, LieInTheHomeFolderWithoutOne) {
    const Environment configuration("XDG_CONFIG_HOME", nullptr);
    const Environment home("HOME", folder_.path().c_str());
    QtUserDefaults().setString("value", key);
    EXPECT_TRUE(std::filesystem::exists(folder_ / ".config" / "orlo-h8-deckmate.ini"));
}

TEST_F(QtUserDefaultsTest, WithoutAHomeNothingIsKept) {
    const Environment configuration("XDG_CONFIG_HOME", nullptr);
    const Environment home("HOME", nullptr);
    QtUserDefaults defaults;
    defaults.setString("value", key);
    EXPECT_EQ(defaults.stringForKey(key), std::nullopt);
    EXPECT_FALSE(std::filesystem::exists("/.config/orlo-h8-deckmate.ini"));
}

TEST_F(QtUserDefaultsTest, ARelativeConfigurationFolderIsNone) {
    const Environment configuration("XDG_CONFIG_HOME", "relative");
    const Environment home("HOME", folder_.path().c_str());
    QtUserDefaults().setString("value", key);
    EXPECT_TRUE(std::filesystem::exists(folder_ / ".config" / "orlo-h8-deckmate.ini"));
    EXPECT_FALSE(std::filesystem::exists("relative"));
}

} // namespace
} // namespace deckmate
