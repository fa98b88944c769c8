#include "app/FolderHelper.h"

#include "support/LogLines.h"
#include "support/TemporaryFolder.h"

#include <filesystem>
#include <gmock/gmock.h>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace deckmate {
namespace {

namespace fs = std::filesystem;
using namespace std::string_view_literals;
using test::LogLines;
using test::TemporaryFolder;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

constexpr std::string_view replacement = "\xEF\xBF\xBD"; // U+FFFD

FolderHelper listing(const fs::path& folder) {
    return {folder, FileIcons{}};
}

/// What a listing shows, folders with a slash behind them.
std::vector<std::string> shown(const FolderHelper& helper) {
    std::vector<std::string> names;
    for (const WavItem& item : helper.files()) {
        names.push_back(item.fileName.toStdString() + (item.isFolder ? "/" : ""));
    }
    return names;
}

std::vector<std::string> shown(const TemporaryFolder& folder) {
    return shown(listing(folder.path()));
}

/// As long as it exists, permissions of files count even where the tests run as root.
class OrdinaryUser {
public:
    OrdinaryUser() : before_(geteuid()) {
        constexpr uid_t nobody = 65534;
        if (before_ == 0) {
            EXPECT_EQ(seteuid(nobody), 0);
        }
    }
    ~OrdinaryUser() { EXPECT_EQ(seteuid(before_), 0); }
    OrdinaryUser(const OrdinaryUser&) = delete;
    OrdinaryUser& operator=(const OrdinaryUser&) = delete;
    OrdinaryUser(OrdinaryUser&&) = delete;
    OrdinaryUser& operator=(OrdinaryUser&&) = delete;

private:
    uid_t before_;
};

TEST(FolderHelper, FoldersComeFirstThenFilesUpperCaseBeforeLowerCase) {
    const TemporaryFolder folder;
    folder.file("b.WAV", {});
    folder.file("a.wav", {});
    folder.file("Notes.txt", {});
    fs::create_directory(folder / "a folder");
    fs::create_directory(folder / "Z Folder");
    fs::create_directory(folder / "Tool.app");
    EXPECT_THAT(shown(folder), ElementsAre("Z Folder/", "a folder/", "a.wav", "b.WAV"));
}

TEST(FolderHelper, AnEmptyFolderHasNoFiles) {
    const TemporaryFolder folder;
    const LogLines log;
    EXPECT_THAT(listing(folder.path()).files(), IsEmpty());
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST(FolderHelper, TheExtensionCountsInAnyCase) {
    const TemporaryFolder folder;
    for (const char* name : {"a.wav", "b.WAV", "c.Wav", "d.wAv"}) {
        folder.file(name, {});
    }
    EXPECT_THAT(shown(folder), ElementsAre("a.wav", "b.WAV", "c.Wav", "d.wAv"));
}

TEST(FolderHelper, OnlyTheLastExtensionCounts) {
    const TemporaryFolder folder;
    for (const char* name :
         {"take.wav.txt", "take.wav.", "take.wave", "take.wa", "wav", "takewav"}) {
        folder.file(name, {});
    }
    folder.file("take.txt.wav", {});
    EXPECT_THAT(shown(folder), ElementsAre("take.txt.wav"));
}

TEST(FolderHelper, AFolderNamedLikeAFileIsAFolder) {
    const TemporaryFolder folder;
    fs::create_directory(folder / "old.wav");
    EXPECT_THAT(shown(folder), ElementsAre("old.wav/"));
}

TEST(FolderHelper, ProgramBundlesAreLeftOutInAnyCase) {
    const TemporaryFolder folder;
    fs::create_directory(folder / "Tool.APP");
    fs::create_directory(folder / "Tool.apple");
    EXPECT_THAT(shown(folder), ElementsAre("Tool.apple/"));
}

TEST(FolderHelper, HiddenFilesAndFoldersAreLeftOut) {
    const TemporaryFolder folder;
    folder.file(".take.wav", {});
    folder.file(".wav", {});
    fs::create_directory(folder / ".cache");
    EXPECT_THAT(shown(folder), IsEmpty());
}

TEST(FolderHelper, FoldersAreShownWhateverTheyContainAndNotEntered) {
    const TemporaryFolder folder;
    fs::create_directory(folder / "texts");
    folder.file("texts/inner.wav", {});
    EXPECT_THAT(shown(folder), ElementsAre("texts/"));
}

TEST(FolderHelper, NumbersInNamesAreOrderedDigitByDigit) {
    const TemporaryFolder folder;
    folder.file("take 9.wav", {});
    folder.file("take 10.wav", {});
    EXPECT_THAT(shown(folder), ElementsAre("take 10.wav", "take 9.wav"));
}

TEST(FolderHelper, AccentsSortByCodeUnitBehindAllPlainLetters) {
    const TemporaryFolder folder;
    folder.file("\xC3\xA9t\xC3\xA9.wav", {});
    folder.file("zoo.wav", {});
    EXPECT_THAT(shown(folder), ElementsAre("zoo.wav", "\xC3\xA9t\xC3\xA9.wav"));
}

// U+1F3B5 is the pair D83C DFB5 in UTF-16, so that it comes before U+FF21, unlike in UTF-8.
TEST(FolderHelper, NamesSortByUtf16CodeUnitsNotByBytes) {
    const TemporaryFolder folder;
    folder.file("\xEF\xBC\xA1.wav", {});
    folder.file("\xF0\x9F\x8E\xB5.wav", {});
    EXPECT_THAT(shown(folder), ElementsAre("\xF0\x9F\x8E\xB5.wav", "\xEF\xBC\xA1.wav"));
}

TEST(FolderHelper, PathsAreTheFoldersFollowedByTheName) {
    const TemporaryFolder folder;
    folder.file("take.wav", {});
    const FolderHelper helper = listing(folder.path());
    ASSERT_THAT(helper.files(), SizeIs(1));
    EXPECT_EQ(helper.files()[0].fullPath.native(), folder.path().native() + "/take.wav");
    EXPECT_EQ(helper.folderPath(), folder.path());
}

TEST(FolderHelper, NamesThatAreNotUtf8AreShownAndKeepTheirBytes) {
    const TemporaryFolder folder;
    folder.file("caf\xE9.wav", {0x52});
    const FolderHelper helper = listing(folder.path());
    EXPECT_THAT(shown(helper), ElementsAre("caf" + std::string(replacement) + ".wav"));
    EXPECT_EQ(helper.files().at(0).fullPath.filename().native(), "caf\xE9.wav");
    EXPECT_THAT(test::contentsOf(helper.files().at(0).fullPath), ElementsAre(0x52));
}

TEST(FolderHelper, NamesThatLookTheSameKeepTheirOrder) {
    const TemporaryFolder folder;
    folder.file("\xFF.wav", {});
    folder.file("\xFE.wav", {});
    const FolderHelper helper = listing(folder.path());
    ASSERT_THAT(helper.files(), SizeIs(2));
    EXPECT_EQ(helper.files()[0].fileName, helper.files()[1].fileName);
    EXPECT_EQ(helper.files()[0].fullPath.filename().native(), "\xFE.wav");
}

TEST(FolderHelper, TheLongestNamesThereAreAreListed) {
    const TemporaryFolder folder;
    const std::string name = std::string(251, 'x') + ".wav";
    folder.file(name, {});
    EXPECT_THAT(shown(folder), ElementsAre(name));
}

TEST(FolderHelper, LineBreaksInNamesAreShownAsReplacedCharacters) {
    const TemporaryFolder folder;
    const std::string name = "one\ntwo\x1B\xE2\x80\xA8three.wav"; // with an escape and U+2028
    folder.file(name, {0x52});
    const FolderHelper helper = listing(folder.path());
    const std::string mark(replacement);
    EXPECT_THAT(shown(helper), ElementsAre("one" + mark + "two" + mark + mark + "three.wav"));
    EXPECT_THAT(test::contentsOf(helper.files().at(0).fullPath), ElementsAre(0x52));
}

TEST(FolderHelper, RightToLeftNamesAreShownAsTheyStand) {
    const TemporaryFolder folder;
    const std::string name = "\xD7\xA9\xD7\x9C\xD7\x95\xD7\x9D.wav";
    folder.file(name, {});
    EXPECT_THAT(shown(folder), ElementsAre(name));
}

TEST(FolderHelper, CharactersThatTurnTheTextAreShownAsReplacedOnes) {
    const QString mark(QChar(0xFFFD));
    for (const char16_t code : u"\u202A\u202B\u202C\u202D\u202E\u2066\u2067\u2068\u2069"sv) {
        const QString name = "take" + QString(QChar(code)) + "vaw.wav";
        EXPECT_EQ(displayName(name.toStdString()), "take" + mark + "vaw.wav") << int{code};
    }
}

TEST(FolderHelper, TheNeighboursOfCharactersThatTurnTheTextAreShownAsTheyStand) {
    for (const char16_t code : u"\u202F\u2065\u206A\u200E\u200F"sv) {
        const QString name = "take" + QString(QChar(code)) + ".wav";
        EXPECT_EQ(displayName(name.toStdString()), name) << int{code};
    }
}

TEST(FolderHelper, LinksCountAsWhatTheyLeadTo) {
    const TemporaryFolder folder;
    const TemporaryFolder elsewhere;
    fs::create_directory_symlink(elsewhere.path(), folder / "linked folder");
    fs::create_symlink(elsewhere.file("take", {}), folder / "linked.wav");
    fs::create_symlink(elsewhere.file("text", {}), folder / "linked.txt");
    EXPECT_THAT(shown(folder), ElementsAre("linked folder/", "linked.wav"));
}

TEST(FolderHelper, LinksThatLeadNowhereAreLeftOutSilently) {
    const TemporaryFolder folder;
    const LogLines log;
    fs::create_symlink(folder / "gone.wav", folder / "link.wav");
    EXPECT_THAT(shown(folder), IsEmpty());
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST(FolderHelper, LinksInACircleAreAnErrorOfTheirEntryAlone) {
    const TemporaryFolder folder;
    const LogLines log;
    fs::create_symlink(folder / "circle.wav", folder / "circle.wav");
    folder.file("take.wav", {});
    EXPECT_THAT(shown(folder), ElementsAre("take.wav"));
    EXPECT_THAT(log.lines(), ElementsAre("eeee"));
}

TEST(FolderHelper, AnEntryThatMayNotBeAskedIsLoggedAndSkipped) {
    const TemporaryFolder folder;
    folder.file("take.wav", {});
    fs::create_symlink(folder / "take.wav", folder / "link.wav");
    const LogLines log;
    chmod(folder.path().c_str(), 0444);
    std::vector<std::string> names;
    {
        const OrdinaryUser user;
        names = shown(folder);
    }
    chmod(folder.path().c_str(), 0700);
    EXPECT_THAT(names, ElementsAre("take.wav"));
    EXPECT_THAT(log.lines(), ElementsAre("eeee"));
}

TEST(FolderHelper, AnUnreadableFolderIsEmpty) {
    const TemporaryFolder folder;
    folder.file("take.wav", {});
    const LogLines log;
    chmod(folder.path().c_str(), 0000);
    std::vector<std::string> names = {"not listed"};
    {
        const OrdinaryUser user;
        names = shown(folder);
    }
    chmod(folder.path().c_str(), 0700);
    EXPECT_THAT(names, IsEmpty());
    EXPECT_THAT(log.lines(), ElementsAre("eeee"));
}

TEST(FolderHelper, WhatIsNoFolderIsEmpty) {
    const TemporaryFolder folder;
    EXPECT_THAT(shown(listing(folder / "missing")), IsEmpty());
    EXPECT_THAT(shown(listing(folder.file("take.wav", {}))), IsEmpty());
    EXPECT_THAT(shown(listing("")), IsEmpty());
    EXPECT_THAT(shown(listing(std::string(10000, 'x'))), IsEmpty());
}

TEST(FolderHelper, PipesAndSocketsNamedLikeFilesAreFilesAndNotOpened) {
    const TemporaryFolder folder;
    ASSERT_EQ(mkfifo((folder / "pipe.wav").c_str(), 0600), 0);
    const int listener = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    (folder / "socket.wav").native().copy(address.sun_path, sizeof address.sun_path - 1);
    ASSERT_EQ(bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    EXPECT_THAT(shown(folder), ElementsAre("pipe.wav", "socket.wav"));
    close(listener);
}

TEST(FolderHelper, ListingAgainSeesWhatCameAndWent) {
    const TemporaryFolder folder;
    fs::remove(folder.file("old.wav", {}));
    const fs::path early = folder.file("early.wav", {});
    FolderHelper helper = listing(folder.path());
    folder.file("late.wav", {});
    fs::remove(early);
    helper.grabWavFiles();
    EXPECT_THAT(shown(helper), ElementsAre("late.wav"));
}

TEST(FolderHelper, AnotherFolderIsListedWhenAsked) {
    const TemporaryFolder first;
    const TemporaryFolder second;
    second.file("take.wav", {});
    FolderHelper helper = listing(first.path());
    helper.setFolderPath(second.path());
    EXPECT_THAT(shown(helper), IsEmpty());
    helper.grabWavFiles();
    EXPECT_THAT(shown(helper), ElementsAre("take.wav"));
}

TEST(FolderHelper, SortingTakesAnyListGivenToIt) {
    FolderHelper helper = listing("");
    WavItem file;
    file.fileName = "a";
    WavItem folder;
    folder.fileName = "b";
    folder.isFolder = true;
    helper.setFiles({file, folder});
    helper.sortFileList();
    EXPECT_THAT(shown(helper), ElementsAre("b/", "a"));
}

TEST(FolderHelper, NoDescriptorIsLeftOpen) {
    const TemporaryFolder folder;
    const int before = dup(STDERR_FILENO);
    close(before);
    for (int round = 0; round < 3; ++round) {
        listing(folder.path());
    }
    const int after = dup(STDERR_FILENO);
    close(after);
    EXPECT_EQ(after, before);
}

} // namespace
} // namespace deckmate
