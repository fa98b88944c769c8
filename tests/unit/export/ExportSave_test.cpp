#include "export/ExportSave.h"

#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace deckmate {
namespace {

using namespace test;

TEST(ProposedName, AppendsDecodeAndTheEnding) {
    EXPECT_EQ(proposedName("take.WAV"), "take_Decode.WAV");
    EXPECT_EQ(proposedName("/a/b/take.wav"), "take_Decode.WAV");
}

TEST(ProposedName, OnlyTheLastExtensionGoes) {
    EXPECT_EQ(proposedName("take.1.wav"), "take.1_Decode.WAV");
    EXPECT_EQ(proposedName("take"), "take_Decode.WAV");
    EXPECT_EQ(proposedName(".wav"), ".wav_Decode.WAV");
}

TEST(WavEnding, IsAppendedWhereItIsMissing) {
    EXPECT_EQ(withWavEnding("/a/take"), "/a/take.WAV");
    EXPECT_EQ(withWavEnding("/a/take.mp3"), "/a/take.mp3.WAV");
    EXPECT_EQ(withWavEnding("/a/takewav"), "/a/takewav.WAV");
    EXPECT_EQ(withWavEnding("/a/take.wav "), "/a/take.wav .WAV");
}

TEST(WavEnding, IsKeptInEveryCase) {
    for (const char* name : {"/a/take.WAV", "/a/take.wav", "/a/take.WaV", "a.wav", "/.wav"}) {
        EXPECT_EQ(withWavEnding(name), name);
    }
}

TEST(WavEnding, APathNoLongerThanTheEndingGetsIt) {
    EXPECT_EQ(withWavEnding(".wav"), ".wav.WAV");
    EXPECT_EQ(withWavEnding("a"), "a.WAV");
    EXPECT_EQ(withWavEnding(""), ".WAV");
}

TEST(AlertText, NamesTheReason) {
    EXPECT_EQ(alertText(SaveOutcome::refused), "Fail to open.");
    EXPECT_EQ(alertText(SaveOutcome::failed), "Fail to save.");
    EXPECT_EQ(alertText(SaveOutcome::succeeded), "");
}

class SaveDecodedTest : public testing::Test {
protected:
    TemporaryFolder folder;
    const Bytes original = recording(pcm24({1 << 20, 1 << 19}));
    std::filesystem::path source = folder.file("take.wav", original);
    Export exporter{source};
    std::vector<std::string> logged;

    SaveOutcome save(const std::filesystem::path& target, const SaveChoices& choices = {}) {
        return saveDecoded(exporter, target, choices,
                           [&](std::string_view line) { logged.emplace_back(line); });
    }
};

TEST_F(SaveDecodedTest, SucceedsAndWritesTheFile) {
    EXPECT_EQ(save(folder / "out.WAV"), SaveOutcome::succeeded);
    EXPECT_EQ(contentsOf(folder / "out.WAV").size(), 748U + 6);
}

TEST_F(SaveDecodedTest, HandsOnTheChoices) {
    EXPECT_EQ(save(folder / "out.WAV", {.is24bit = false, .isNormalize = true}),
              SaveOutcome::succeeded);
    EXPECT_EQ(contentsOf(folder / "out.WAV").size(), 748U + 8);
    EXPECT_FALSE(exporter.isExport24Bit());
    EXPECT_TRUE(exporter.normalize());
}

TEST_F(SaveDecodedTest, LogsTheChoicesThatAreOn) {
    save(folder / "a.WAV", {.is24bit = true, .isNormalize = true});
    EXPECT_EQ(logged, (std::vector<std::string>{"24 bit is = ON", "Normalize is = ON"}));
    logged.clear();
    save(folder / "b.WAV", {.is24bit = false, .isNormalize = false});
    EXPECT_TRUE(logged.empty());
}

TEST_F(SaveDecodedTest, TheSourceIsRefusedUntouched) {
    EXPECT_EQ(save(source), SaveOutcome::refused);
    EXPECT_EQ(contentsOf(source), original);
    EXPECT_TRUE(logged.empty());
}

TEST_F(SaveDecodedTest, TheSourceIsRefusedUnderEveryName) {
    std::filesystem::create_symlink("take.wav", folder / "link.WAV");
    std::filesystem::create_hard_link(source, folder / "hard.WAV");
    std::filesystem::create_directory(folder / "sub");
    for (const char* name : {"link.WAV", "hard.WAV", "sub/../take.wav", "./take.wav"}) {
        EXPECT_EQ(save(folder / name), SaveOutcome::refused) << name;
    }
    EXPECT_EQ(contentsOf(source), original);
}

TEST_F(SaveDecodedTest, TheSourcesPathIsRefusedEvenWhenTheFileIsGone) {
    std::filesystem::remove(source);
    EXPECT_EQ(save(source), SaveOutcome::refused);
    EXPECT_FALSE(std::filesystem::exists(source));
}

TEST_F(SaveDecodedTest, AnUnwritableTargetFails) {
    EXPECT_EQ(save(folder / "missing" / "out.WAV"), SaveOutcome::failed);
}

TEST_F(SaveDecodedTest, AnInvalidRecordingFails) {
    exporter.cleanUp();
    EXPECT_EQ(save(folder / "out.WAV"), SaveOutcome::failed);
    EXPECT_FALSE(std::filesystem::exists(folder / "out.WAV"));
}

} // namespace
} // namespace deckmate
