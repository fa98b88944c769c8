#include "app/SaveDialog.h"

#include "desktop/app/ExportSheet.h"

#include <functional>

#include <QFileDialog>
#include <QMessageBox>

namespace deckmate::test {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::size_t samplesSize = 12; ///< two frames of 24 bits

/// The real dialog, over the sheet, answered by real keys and clicks.
class SaveDialogTest : public ExportSheet {
protected:
    explicit SaveDialogTest(const std::filesystem::path& name = "take.wav") : ExportSheet(name) {
        noteAlerts();
        recording_->setDirPath(folder.path());
    }

    /// Saves through the dialog, answered so.
    void save(Answers::Answer answered) {
        show();
        answers.add("saveDialog", std::move(answered));
        clickOn("btnSave");
    }
    void saveAs(const QString& name) {
        save([name](QWidget& dialog) { answer(dialog, name); });
    }
    void answerQuestion(const char* button) {
        answers.add("overwrite", [this, button](QWidget& question) {
            clickOn(question.findChild<QAbstractButton*>(button));
        });
    }
    std::size_t sizeOfSamples(const std::filesystem::path& path) const {
        return samplesOf(path).size();
    }
    std::size_t filesThere() const {
        return static_cast<std::size_t>(
            std::distance(std::filesystem::directory_iterator(folder.path()), {}));
    }
};

TEST_F(SaveDialogTest, AsksInItsWordsAndProposesAName) {
    save([&](QWidget& asking) {
        auto& dialog = dynamic_cast<QFileDialog&>(asking);
        EXPECT_EQ(dialog.windowTitle(), "Saving checkboard...");
        EXPECT_EQ(dialog.findChild<QLabel*>("message")->text(),
                  "Please select a path where to save decoded wav.");
        EXPECT_TRUE(dialog.findChild<QLabel*>("message")->isVisible());
        EXPECT_EQ(nameOf(dialog)->text(), "take_Decode.WAV");
        EXPECT_EQ(dialog.directory().absolutePath().toStdString(), folder.path().string());
        EXPECT_EQ(dialog.nameFilters(), QStringList("WAV (*.wav)"));
        EXPECT_FALSE(dialog.testOption(QFileDialog::ReadOnly)); // folders can be made
        desktop.tap("Escape");
    });
}

TEST_F(SaveDialogTest, ReturnTakesTheProposal) {
    save([&](QWidget& /*dialog*/) { desktop.tap("Return"); });
    EXPECT_EQ(sizeOfSamples(folder / "take_Decode.WAV"), samplesSize);
    EXPECT_THAT(alerts, IsEmpty());
}

TEST_F(SaveDialogTest, TheButtonTakesTheProposal) {
    save([&](QWidget& dialog) { clickOn(buttonOf(dialog, "Save")); });
    EXPECT_EQ(sizeOfSamples(folder / "take_Decode.WAV"), samplesSize);
}

TEST_F(SaveDialogTest, TypingReplacesTheNameAndLeavesTheEnding) {
    save([&](QWidget& dialog) {
        desktop.type("mix7");
        EXPECT_EQ(nameOf(dialog)->text(), "mix7.WAV");
        desktop.tap("Return");
    });
    EXPECT_EQ(sizeOfSamples(folder / "mix7.WAV"), samplesSize);
}

TEST_F(SaveDialogTest, BeginsInTheFolderThatTheBrowserShows) {
    std::filesystem::create_directory(folder / "shown");
    recording_->setDirPath(folder / "shown");
    save([&](QWidget& /*dialog*/) { desktop.tap("Return"); });
    EXPECT_EQ(sizeOfSamples(folder / "shown" / "take_Decode.WAV"), samplesSize);
}

TEST_F(SaveDialogTest, CancelKeepsTheSheet) {
    save([&](QWidget& dialog) { clickOn(buttonOf(dialog, "Cancel")); });
    EXPECT_TRUE(sheet->isVisible());
    EXPECT_EQ(eventsFired(), 0);
    EXPECT_EQ(filesThere(), 1U);
}

TEST_F(SaveDialogTest, ClosingItKeepsTheSheet) {
    save([&](QWidget& dialog) { dialog.close(); });
    EXPECT_TRUE(sheet->isVisible());
    EXPECT_EQ(eventsFired(), 0);
}

TEST_F(SaveDialogTest, AFileIsReplacedWhenTheUserSaysSo) {
    folder.file("mix.WAV", zeros(5000));
    answers.add("saveDialog", [&](QWidget& dialog) { answer(dialog, "mix.WAV"); });
    answerQuestion("btnReplace");
    show();
    clickOn("btnSave");
    EXPECT_EQ(sizeOfSamples(folder / "mix.WAV"), samplesSize);
}

TEST_F(SaveDialogTest, AFileIsKeptWhenTheUserSaysSo) {
    folder.file("mix.WAV", zeros(5000));
    show();
    answers.add("saveDialog", [&](QWidget& dialog) {
        answer(dialog, "mix.WAV");
        EXPECT_TRUE(dialog.isVisible());
        answer(dialog, "other.WAV");
    });
    answerQuestion("btnKeep");
    clickOn("btnSave");
    EXPECT_EQ(contentsOf(folder / "mix.WAV"), zeros(5000));
    EXPECT_EQ(sizeOfSamples(folder / "other.WAV"), samplesSize);
}

TEST_F(SaveDialogTest, ReturnKeepsTheFile) {
    folder.file("mix.WAV", zeros(5000));
    show();
    answers.add("saveDialog", [&](QWidget& dialog) {
        answer(dialog, "mix.WAV");
        tapIn(dialog, "Escape");
    });
    answers.add("overwrite", [&](QWidget& /*question*/) {
        desktop.keyUp("Return"); // of the answer before
        desktop.tap("Return");
    });
    clickOn("btnSave");
    EXPECT_EQ(contentsOf(folder / "mix.WAV"), zeros(5000));
    EXPECT_TRUE(sheet->isVisible());
}

TEST_F(SaveDialogTest, TheQuestionIsAboutTheFileThatWillBeWritten) {
    folder.file("mix.WAV", zeros(5000));
    show();
    answers.add("saveDialog", [&](QWidget& dialog) {
        answer(dialog, "mix");
        tapIn(dialog, "Escape");
    });
    answers.add("overwrite", [&](QWidget& question) {
        EXPECT_EQ(dynamic_cast<QMessageBox&>(question).text(),
                  "mix.WAV already exists.\nDo you want to replace it?");
        desktop.tap("Escape");
    });
    clickOn("btnSave");
    EXPECT_EQ(contentsOf(folder / "mix.WAV"), zeros(5000));
}

TEST_F(SaveDialogTest, AFileWithoutTheEndingIsNotInTheWay) {
    folder.file("mix", zeros(5000));
    saveAs("mix");
    EXPECT_EQ(sizeOfSamples(folder / "mix.WAV"), samplesSize);
    EXPECT_EQ(contentsOf(folder / "mix"), zeros(5000));
}

TEST_F(SaveDialogTest, ALowerCaseEndingIsKept) {
    saveAs("mix.wav");
    EXPECT_EQ(sizeOfSamples(folder / "mix.wav"), samplesSize);
}

TEST_F(SaveDialogTest, TheSourceIsRefusedWithoutAQuestion) {
    saveAs("take.wav");
    EXPECT_THAT(alerts, ElementsAre("Fail to open."));
    EXPECT_EQ(contentsOf(source), original);
}

TEST_F(SaveDialogTest, APlaceInsideAFileFails) {
    saveAs("take.wav/out.WAV");
    EXPECT_THAT(alerts, ElementsAre("Fail to save."));
    EXPECT_EQ(contentsOf(source), original);
}

TEST_F(SaveDialogTest, AFolderOfTheNameFails) {
    std::filesystem::create_directory(folder / "mix.WAV");
    saveAs("mix");
    EXPECT_THAT(alerts, ElementsAre("Fail to save."));
}

TEST_F(SaveDialogTest, ATypedFolderIsEnteredAndTheNameStays) {
    std::filesystem::create_directory(folder / "sub");
    save([&](QWidget& dialog) {
        answer(dialog, "sub");
        EXPECT_TRUE(dialog.isVisible());
        EXPECT_EQ(nameOf(dialog)->text(), "take_Decode.WAV");
        tapIn(dialog, "Return");
    });
    EXPECT_EQ(sizeOfSamples(folder / "sub" / "take_Decode.WAV"), samplesSize);
}

TEST_F(SaveDialogTest, TwoDotsLeadUp) {
    std::filesystem::create_directory(folder / "sub");
    recording_->setDirPath(folder / "sub");
    save([&](QWidget& dialog) {
        answer(dialog, "..");
        tapIn(dialog, "Return");
    });
    EXPECT_EQ(sizeOfSamples(folder / "take_Decode.WAV"), samplesSize);
}

TEST_F(SaveDialogTest, AWholePathIsTakenAsItStands) {
    std::filesystem::create_directory(folder / "sub");
    saveAs(QString::fromStdString((folder / "sub" / "mix.WAV").string()));
    EXPECT_EQ(sizeOfSamples(folder / "sub" / "mix.WAV"), samplesSize);
}

TEST_F(SaveDialogTest, ATildeIsTheHomeFolder) {
    saveAs("~/" + QString::fromStdString(folder.path().filename().string()) + "-home.WAV");
    const std::filesystem::path home = qEnvironmentVariable("HOME").toStdString();
    EXPECT_EQ(sizeOfSamples(home / (folder.path().filename().string() + "-home.WAV")), samplesSize);
}

TEST_F(SaveDialogTest, WithoutANameItWaits) {
    save([&](QWidget& dialog) {
        answer(dialog, "");
        EXPECT_TRUE(dialog.isVisible());
        answer(dialog, "mix.WAV");
    });
    EXPECT_EQ(sizeOfSamples(folder / "mix.WAV"), samplesSize);
}

TEST_F(SaveDialogTest, AZeroCharacterDoesNotEndTheName) {
    saveAs(QString("mi") + QChar(0) + "x");
    EXPECT_EQ(sizeOfSamples(folder / "mix.WAV"), samplesSize);
}

TEST_F(SaveDialogTest, AVanishedFolderGivesWayToTheOneAroundIt) {
    recording_->setDirPath(folder / "gone" / "deeper");
    save([&](QWidget& /*dialog*/) { desktop.tap("Return"); });
    EXPECT_EQ(sizeOfSamples(folder / "take_Decode.WAV"), samplesSize);
}

TEST_F(SaveDialogTest, AFolderWhoseNameIsNoTextGivesWayToTheOneAroundIt) {
    std::filesystem::create_directory(folder / "f\xFC");
    recording_->setDirPath(folder / "f\xFC");
    save([&](QWidget& /*dialog*/) { desktop.tap("Return"); });
    EXPECT_EQ(sizeOfSamples(folder / "take_Decode.WAV"), samplesSize);
}

TEST_F(SaveDialogTest, ALongNameInTheQuestionIsCut) {
    const std::string name = std::string(200, 'm') + ".WAV";
    folder.file(name, zeros(5000));
    show();
    answers.add("saveDialog", [&](QWidget& dialog) {
        answer(dialog, QString::fromStdString(name));
        tapIn(dialog, "Escape");
    });
    answers.add("overwrite", [&](QWidget& question) {
        EXPECT_LT(question.width(), 800);
        desktop.tap("Escape");
    });
    clickOn("btnSave");
}

TEST_F(SaveDialogTest, TheSheetMayBeDestroyedUnderTheDialog) {
    save([&](QWidget& /*dialog*/) { sheet.reset(); });
    EXPECT_EQ(eventsFired(), 0);
    EXPECT_EQ(filesThere(), 1U);
}

TEST_F(SaveDialogTest, TheSheetMayBeDestroyedUnderTheQuestion) {
    folder.file("take_Decode.WAV", zeros(5000));
    show();
    answers.add("saveDialog", [&](QWidget& dialog) { clickOn(buttonOf(dialog, "Save")); });
    answers.add("overwrite", [&](QWidget& /*question*/) { sheet.reset(); });
    clickOn("btnSave");
    EXPECT_EQ(eventsFired(), 0);
    EXPECT_EQ(contentsOf(folder / "take_Decode.WAV"), zeros(5000));
}

TEST_F(SaveDialogTest, TheSheetMayBeDestroyedUnderTheQuestionThatAKeyBroughtUp) {
    folder.file("take_Decode.WAV", zeros(5000));
    show();
    answers.add("saveDialog", [&](QWidget& /*dialog*/) { desktop.tap("Return"); });
    answers.add("overwrite", [&](QWidget& /*question*/) { sheet.reset(); });
    clickOn("btnSave");
    EXPECT_EQ(eventsFired(), 0);
    EXPECT_EQ(contentsOf(folder / "take_Decode.WAV"), zeros(5000));
}

/// A recording of a name that is hard to take, and what its export is called.
class HardName : public SaveDialogTest, public testing::WithParamInterface<const char*> {
protected:
    HardName() : SaveDialogTest(std::string(GetParam()) + ".wav") {}

    std::filesystem::path proposed() const {
        return folder / (std::string(GetParam()) + "_Decode.WAV");
    }
};

TEST_P(HardName, IsKeptByTheProposal) {
    save([&](QWidget& /*dialog*/) { desktop.tap("Return"); });
    EXPECT_EQ(sizeOfSamples(proposed()), samplesSize);
    EXPECT_EQ(contentsOf(source), original);
    EXPECT_EQ(filesThere(), 2U);
    EXPECT_THAT(alerts, IsEmpty());
}

TEST_P(HardName, IsAskedAboutWhenItIsThere) {
    folder.file(proposed().filename(), zeros(5000));
    show();
    answers.add("saveDialog", [&](QWidget& dialog) {
        tapIn(dialog, "Return");
        tapIn(dialog, "Escape");
    });
    answerQuestion("btnKeep");
    clickOn("btnSave");
    EXPECT_EQ(contentsOf(proposed()), zeros(5000));
}

INSTANTIATE_TEST_SUITE_P(Each, HardName,
                         testing::Values("t\xE9ke",              // no UTF-8
                                         "two\nlines",           // a line break
                                         "a\"b\"c",              // quotation marks
                                         "\xD7\xA9\xD7\x9C",     // right to left
                                         "~ann", "-rf", " lead", // what shells and fields expand
                                         "a;b|c$d%41&e", "<b>bold", "back\\slash", "dots..in.it",
                                         "\xF0\x9F\x8E\xA4"));

class LongestName : public SaveDialogTest {
protected:
    LongestName() : SaveDialogTest(std::string(251, 'n') + ".wav") {}
};

TEST_F(LongestName, CanBeShortened) {
    saveAs("short");
    EXPECT_EQ(sizeOfSamples(folder / "short.WAV"), samplesSize);
}

TEST_F(SaveDialogTest, ANameBeyondTheLongestFails) {
    // 100 characters of three bytes each.
    saveAs(QString(100, QChar(0x3042)));
    EXPECT_THAT(alerts, ElementsAre("Fail to save."));
    EXPECT_EQ(filesThere(), 1U);
}

} // namespace

} // namespace deckmate::test
