#include "desktop/app/ExportSheet.h"
#include "desktop/app/Spoken.h"
#include "desktop/app/XWindows.h"

#include <memory>
#include <optional>
#include <string>

#include <QApplication>
#include <QCheckBox>
#include <QMessageBox>
#include <QPushButton>
#include <QRadioButton>

namespace deckmate::test {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

/// The save dialog is not asked: it is as if the user had chosen `target` there.
class ExportVCTest : public ExportSheet {
protected:
    ExportVCTest() {
        noteAlerts();
        sheet->chooseTarget = [this](const auto&...) {
            ++asked;
            return target;
        };
    }

    QRadioButton* radio24() const { return find<QRadioButton>("radio24"); }
    QRadioButton* radio32() const { return find<QRadioButton>("radio32"); }
    QCheckBox* normalize() const { return find<QCheckBox>("checkboxNormalize"); }
    void save() { clickOn("btnSave"); }
    /// Before the sheet is shown.
    void rename(const std::string& name) {
        std::filesystem::rename(source, folder / name);
        recording_ = std::make_shared<Export>(folder / name);
        sheet->setExporter(recording_);
    }

    std::optional<std::filesystem::path> target = folder / "out.WAV";
    int asked = 0;
};

TEST_F(ExportVCTest, BeginsWithTheCommonFormatAndTheGain) {
    show();
    EXPECT_TRUE(radio24()->isChecked());
    EXPECT_FALSE(radio32()->isChecked());
    EXPECT_FALSE(normalize()->isChecked());
}

TEST_F(ExportVCTest, TitlesAreWhiteAndVerbatim) {
    show();
    EXPECT_EQ(radio24()->text(), "24-bit Linear");
    EXPECT_EQ(radio32()->text(), "32-bit Float");
    for (QRadioButton* const radio : {radio24(), radio32()}) {
        const QImage image = Desktop::painted(*radio);
        int letters = 0; // of the letters: to the right of the ring
        for (int x = image.width() / 3; x < image.width(); ++x) {
            for (int y = 0; y < image.height(); ++y) {
                letters += image.pixelColor(x, y) == QColor(Qt::white) ? 1 : 0;
            }
        }
        EXPECT_GT(letters, 0) << radio->objectName().toStdString();
    }
}

TEST_F(ExportVCTest, IsAWindowOfFixedSizeInTheMiddleOfItsParents) {
    show();
    EXPECT_EQ(sheet->windowTitle(), "Export");
    EXPECT_EQ(sheet->minimumSize(), sheet->maximumSize());
    const XWindows windows;
    const auto id = static_cast<XWindows::Window>(sheet->winId());
    ASSERT_TRUE(Desktop::waitFor([&] { return windows.allows(id, "_NET_WM_ACTION_CLOSE"); }));
    EXPECT_FALSE(windows.allows(id, "_NET_WM_ACTION_MAXIMIZE_HORZ"));
    EXPECT_FALSE(windows.allows(id, "_NET_WM_ACTION_RESIZE"));
    EXPECT_EQ(sheet->palette().color(QPalette::Window), QColor(0x17, 0x19, 0x1C));
    EXPECT_TRUE(Desktop::waitFor([&] {
        const QPoint offset = sheet->geometry().center() - window.geometry().center();
        return offset.manhattanLength() <= 2;
    }));
}

TEST_F(ExportVCTest, StandsOnAGridOfEightPoints) {
    show();
    EXPECT_EQ(sheet->size(), QSize(400, 248));
    EXPECT_EQ(find<QLabel>("lblFileName")->geometry(), QRect(24, 24, 352, 24));
    EXPECT_EQ(radio24()->geometry().topLeft(), QPoint(24, 64));
    EXPECT_EQ(radio32()->geometry().topLeft(), QPoint(24, 88));
    EXPECT_EQ(normalize()->geometry().topLeft(), QPoint(24, 128));
    EXPECT_EQ(find<QWidget>("progress")->geometry(), QRect(24, 180, 352, 4));
    EXPECT_EQ(find<QWidget>("btnCancel")->geometry(), QRect(176, 200, 96, 32));
    EXPECT_EQ(find<QWidget>("btnSave")->geometry(), QRect(280, 200, 96, 32));
}

TEST_F(ExportVCTest, NamesTheRecording) {
    show();
    EXPECT_EQ(find<QLabel>("lblFileName")->text(), "take.wav");
}

TEST_F(ExportVCTest, ALongNameStaysInsideAndIsToldInFull) {
    rename("begin" + std::string(241, 'm') + "end.wav");
    show();
    const QString name = "begin" + QString(241, 'm') + "end.wav";
    auto* const label = find<QLabel>("lblFileName");
    EXPECT_EQ(label->text(), name);
    EXPECT_TRUE(sheet->rect().contains(label->geometry()));
    EXPECT_EQ(toolTipAt(*label, {4, 4}), "<span>" + name + "</span>");
}

TEST_F(ExportVCTest, MarkupInANameIsShownAsItStands) {
    rename("<b>bold<br>x.wav");
    show();
    auto* const label = find<QLabel>("lblFileName");
    EXPECT_EQ(label->text(), "<b>bold<br>x.wav");
    EXPECT_EQ(label->textFormat(), Qt::PlainText);
}

TEST_F(ExportVCTest, ARightToLeftNameIsShownAsItStands) {
    rename("\xD7\xA9\xD7\x9C\xD7\x95\xD7\x9D.wav");
    show();
    auto* const label = find<QLabel>("lblFileName");
    EXPECT_EQ(label->text().toStdString(), "\xD7\xA9\xD7\x9C\xD7\x95\xD7\x9D.wav");
    EXPECT_TRUE(sheet->rect().contains(label->geometry()));
}

TEST_F(ExportVCTest, ANameCannotTurnTheTextAround) {
    rename("take\xE2\x80\xAEgpj.wav");
    show();
    auto* const label = find<QLabel>("lblFileName");
    EXPECT_EQ(label->text().toStdString(), "take\xEF\xBF\xBDgpj.wav");
}

TEST_F(ExportVCTest, EveryControlIsInsideAndTold) {
    show();
    for (const char* const name :
         {"radio24", "radio32", "checkboxNormalize", "btnCancel", "btnSave"}) {
        auto* const control = find<QAbstractButton>(name);
        ASSERT_NE(control, nullptr) << name;
        EXPECT_TRUE(sheet->rect().contains(control->geometry())) << name;
        EXPECT_FALSE(control->text().isEmpty()) << name;
    }
    EXPECT_FALSE(normalize()->accessibleDescription().isEmpty());
}

TEST_F(ExportVCTest, TheFormatsExcludeEachOther) {
    show();
    clickOn("radio32");
    EXPECT_TRUE(radio32()->isChecked());
    EXPECT_FALSE(radio24()->isChecked());
    clickOn("radio24");
    EXPECT_TRUE(radio24()->isChecked());
    EXPECT_FALSE(radio32()->isChecked());
}

TEST_F(ExportVCTest, ItIsReadFromTheTop) {
    show();
    EXPECT_THAT(spokenNames(*sheet),
                ElementsAre("take.wav", "24-bit Linear", "32-bit Float", "Normalize",
                            StartsWith("Scales"), "Export progress", "Cancel", "Save"));
}

TEST_F(ExportVCTest, WorksByKeysAlone) {
    show();
    desktop.tap("Down"); // from 24-bit to 32-bit
    desktop.tap("Tab");
    desktop.tap("space");
    desktop.tap("Return");
    EXPECT_FALSE(sheet->isVisible());
    EXPECT_EQ(bitsOf(*target), 32U);
    EXPECT_THAT(choicesLogged(), ElementsAre("Normalize is = ON"));
}

TEST_F(ExportVCTest, Writes24BitSamplesWithTheGain) {
    show();
    save();
    EXPECT_EQ(bitsOf(*target), 24U);
    // Half of 8388607 and so on, cut toward zero.
    EXPECT_EQ(samplesOf(*target), pcm24({4194303, -2097151, 1048575, 0}));
    EXPECT_THAT(choicesLogged(), ElementsAre("24 bit is = ON"));
    EXPECT_THAT(alerts, IsEmpty());
}

TEST_F(ExportVCTest, Writes32BitFloats) {
    show();
    clickOn("radio32");
    save();
    EXPECT_EQ(bitsOf(*target), 32U);
    EXPECT_EQ(samplesOf(*target), floats({0.5F, -0.25F, 0.125F, 0.0F}));
    EXPECT_THAT(choicesLogged(), IsEmpty());
}

TEST_F(ExportVCTest, NormalizingLeavesTheGainOut) {
    recording_->setGain(-12);
    show();
    clickOn("radio32");
    clickOn("checkboxNormalize");
    save();
    EXPECT_EQ(samplesOf(*target), floats({1.0F, -0.5F, 0.25F, 0.0F}));
    EXPECT_THAT(choicesLogged(), ElementsAre("Normalize is = ON"));
}

TEST_F(ExportVCTest, BothChoicesAreLoggedInTheirOrder) {
    show();
    clickOn("checkboxNormalize");
    save();
    EXPECT_THAT(choicesLogged(), ElementsAre("24 bit is = ON", "Normalize is = ON"));
}

TEST_F(ExportVCTest, SuccessClosesTheSheetAndReloadsTheList) {
    show();
    save();
    EXPECT_FALSE(sheet->isVisible());
    EXPECT_EQ(eventsFired(), 1);
    EXPECT_FALSE(events().wasSheetUp);
    EXPECT_THAT(alerts, IsEmpty());
    EXPECT_EQ(contentsOf(source), original);
}

TEST_F(ExportVCTest, FirstTheSheetGoesThenTheListReloadsThenTheAlertComes) {
    target = source;
    int eventsAtAlert = 0;
    bool wasSheetUpAtAlert = true;
    sheet->showAlert = [&](QWidget* parent, const QString& text) {
        EXPECT_EQ(parent, &window);
        alerts.push_back(text.toStdString());
        eventsAtAlert = eventsFired();
        wasSheetUpAtAlert = sheet->isVisible();
    };
    show();
    save();
    EXPECT_FALSE(events().wasSheetUp);
    EXPECT_EQ(eventsAtAlert, 1);
    EXPECT_FALSE(wasSheetUpAtAlert);
    EXPECT_THAT(alerts, ElementsAre("Fail to open."));
}

TEST_F(ExportVCTest, TheSourceIsRefusedAndNothingLogged) {
    target = source;
    show();
    save();
    EXPECT_THAT(alerts, ElementsAre("Fail to open."));
    EXPECT_THAT(choicesLogged(), IsEmpty());
    EXPECT_EQ(contentsOf(source), original);
}

TEST_F(ExportVCTest, TheSourceIsRefusedWithoutItsEndingToo) {
    rename("take.WAV");
    target = folder / "take";
    show();
    save();
    EXPECT_THAT(alerts, ElementsAre("Fail to open."));
    EXPECT_EQ(contentsOf(folder / "take.WAV"), original);
}

TEST_F(ExportVCTest, TheSourceIsRefusedThroughALink) {
    std::filesystem::create_symlink(source, folder / "link.wav");
    target = folder / "link.wav";
    show();
    save();
    EXPECT_THAT(alerts, ElementsAre("Fail to open."));
    EXPECT_EQ(contentsOf(source), original);
}

TEST_F(ExportVCTest, AFileIsNoFolderToSaveIn) {
    target = source / "out.WAV";
    show();
    save();
    EXPECT_THAT(alerts, ElementsAre("Fail to save."));
    EXPECT_EQ(eventsFired(), 1);
    EXPECT_FALSE(sheet->isVisible());
    EXPECT_EQ(contentsOf(source), original);
}

TEST_F(ExportVCTest, AFullDeviceFails) {
    std::filesystem::create_symlink("/dev/full", folder / "full.WAV");
    target = folder / "full.WAV";
    show();
    save();
    EXPECT_THAT(alerts, ElementsAre("Fail to save."));
}

TEST_F(ExportVCTest, ARecordingThatWasClosedBehindTheSheetFails) {
    show();
    recording_->cleanUp();
    save();
    EXPECT_THAT(alerts, ElementsAre("Fail to save."));
    EXPECT_THAT(choicesLogged(), ElementsAre("24 bit is = ON"));
    EXPECT_FALSE(std::filesystem::exists(*target));
}

TEST_F(ExportVCTest, TheSheetKeepsTheRecordingThatItsOwnerDrops) {
    show();
    recording_.reset();
    save();
    EXPECT_EQ(samplesOf(*target).size(), 12U);
}

TEST_F(ExportVCTest, ANameWithoutTheEndingGetsIt) {
    target = folder / "mix.mp3";
    show();
    save();
    EXPECT_EQ(samplesOf(folder / "mix.mp3.WAV").size(), 12U);
    EXPECT_FALSE(std::filesystem::exists(folder / "mix.mp3"));
}

TEST_F(ExportVCTest, AnEndingInAnyCaseIsKept) {
    target = folder / "mix.wAv";
    show();
    save();
    EXPECT_EQ(samplesOf(folder / "mix.wAv").size(), 12U);
}

TEST_F(ExportVCTest, WithoutATargetTheSheetStaysAndNothingHappens) {
    target.reset();
    show();
    clickOn("radio32");
    save();
    EXPECT_EQ(asked, 1);
    EXPECT_TRUE(sheet->isVisible());
    EXPECT_TRUE(radio32()->isChecked());
    EXPECT_EQ(eventsFired(), 0);
    EXPECT_THAT(log.lines(), IsEmpty());
    target = folder / "second.WAV";
    save();
    EXPECT_EQ(bitsOf(*target), 32U);
}

TEST_F(ExportVCTest, CancelClosesTheSheetAndNothingElse) {
    show();
    clickOn("btnCancel");
    EXPECT_FALSE(sheet->isVisible());
    EXPECT_EQ(asked, 0);
    EXPECT_EQ(eventsFired(), 0);
}

TEST_F(ExportVCTest, EscapeCancels) {
    show();
    desktop.tap("Escape");
    EXPECT_FALSE(sheet->isVisible());
    EXPECT_EQ(asked, 0);
    EXPECT_EQ(eventsFired(), 0);
}

TEST_F(ExportVCTest, ASheetThatIsGoneSavesNothing) {
    show();
    clickOn("btnCancel");
    sheet->btnSave_Click(); // as a click does that was made before
    EXPECT_EQ(asked, 0);
    EXPECT_EQ(eventsFired(), 0);
}

TEST_F(ExportVCTest, SaveWhileTheTargetIsBeingChosenAsksOnce) {
    sheet->chooseTarget = [this](const auto&...) {
        ++asked;
        sheet->btnSave_Click();
        return target;
    };
    show();
    save();
    EXPECT_EQ(asked, 1);
    EXPECT_EQ(eventsFired(), 1);
}

TEST_F(ExportVCTest, TheSheetMayBeDestroyedWhileTheTargetIsChosen) {
    sheet->chooseTarget = [this](const auto&...) {
        sheet.reset();
        return target;
    };
    show();
    sheet->btnSave_Click();
    EXPECT_EQ(eventsFired(), 0);
    EXPECT_FALSE(std::filesystem::exists(*target));
}

TEST_F(ExportVCTest, PresentedModallyItReturnsWhenTheAlertIsRead) {
    target = source;
    desktop.show(window);
    sheet->setParentFrame(window.geometry());
    answers.add("ExportVC", [&](QWidget& /*window*/) { save(); });
    EXPECT_EQ(sheet->exec(), QDialog::Accepted);
    EXPECT_THAT(alerts, ElementsAre("Fail to open."));
    EXPECT_EQ(eventsFired(), 1);
}

TEST_F(ExportVCTest, TheAlertHasOneButtonAndNoMoreThanTheReason) {
    sheet->showAlert = ExportVC().showAlert;
    target = source;
    show();
    answers.add("alert", [&](QWidget& alert) {
        auto& box = dynamic_cast<QMessageBox&>(alert);
        EXPECT_EQ(box.icon(), QMessageBox::NoIcon);
        EXPECT_EQ(box.text(), "");
        EXPECT_EQ(box.informativeText(), "Fail to open.");
        ASSERT_EQ(box.buttons().size(), 1);
        EXPECT_EQ(box.buttons().front()->text(), "Ok");
        clickOn(box.buttons().front());
    });
    save();
}

TEST_F(ExportVCTest, TheAlertMayBeDestroyedWithTheWindowUnderIt) {
    auto under = std::make_unique<QWidget>();
    desktop.show(*under);
    answers.add("alert", [&](QWidget& /*alert*/) { under.reset(); });
    ExportVC().showAlert(under.get(), "Fail to open.");
    EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
}

class AlertKeys : public ExportVCTest, public testing::WithParamInterface<const char*> {};

TEST_P(AlertKeys, CloseTheAlert) {
    sheet->showAlert = ExportVC().showAlert;
    target = source;
    show();
    answers.add("alert", [&](QWidget& alert) {
        desktop.tap(GetParam());
        EXPECT_FALSE(alert.isVisible());
    });
    save();
    EXPECT_EQ(eventsFired(), 1);
}

INSTANTIATE_TEST_SUITE_P(Each, AlertKeys, testing::Values("Return", "Escape", "space"));

} // namespace

} // namespace deckmate::test
