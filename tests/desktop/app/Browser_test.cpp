// The file browser of the main window, and opening recordings from it.
#include "desktop/app/LookEnvironment.h"
#include "desktop/app/MainWindowTest.h"

#include "controls/AngleViewer.h"
#include "controls/GainTickTitle.h"
#include "controls/Slider.h"

#include <filesystem>
#include <optional>

#include <QApplication>
#include <QDropEvent>
#include <QItemSelectionModel>
#include <QMimeData>
#include <QScrollBar>
#include <QUrl>

namespace deckmate::test {
namespace {

using testing::ElementsAre;
namespace fs = std::filesystem;

class Browser : public MainWindowTest {
protected:
    /// Its name; empty without one.
    QString selectedRow() {
        const auto rows = view<QTableView>("tableFile").selectionModel()->selectedRows();
        return rows.isEmpty() ? QString() : rows.front().data().toString();
    }
    /// What the window says that it does with it; nothing if it isn't wanted. The toolkit's own
    /// events, since only a window of another program can begin a real drag.
    std::optional<Qt::DropAction> drop(const fs::path& path, Qt::DropActions possible) {
        QMimeData data;
        data.setUrls({QUrl::fromLocalFile(QString::fromStdString(path.string()))});
        const QPointF place(100, 100);
        QDragEnterEvent enter(place.toPoint(), possible, &data, Qt::LeftButton, Qt::NoModifier);
        QDropEvent event(place, possible, &data, Qt::LeftButton, Qt::NoModifier);
        enter.ignore();
        event.ignore();
        QApplication::sendEvent(&windows->window(), &enter);
        QApplication::sendEvent(&windows->window(), &event);
        EXPECT_EQ(enter.isAccepted(), event.isAccepted());
        return event.isAccepted() ? std::optional(event.dropAction()) : std::nullopt;
    }
};

TEST_F(Browser, TheLastFolderIsListedAtTheStart) {
    addTake("b.WAV", 1);
    fs::create_directory(folder / "takes/Old");
    start();
    EXPECT_EQ(rows(), (QStringList{"Old", "b.WAV"}));
    EXPECT_EQ(view<QAbstractButton>("lblFolder").text(), "takes");
    EXPECT_THAT(presented, ElementsAre());
}

TEST_F(Browser, TheIntroductionOfANewVersionIsShownOnce) {
    defaults.setString("0.0.1", "UD_DO_NOT_SHOW_AGAIN");
    start();
    EXPECT_TRUE(Desktop::waitFor([this] { return !presented.empty(); }));
    controller->viewDidAppear();
    EXPECT_THAT(presented, ElementsAre("IntroductionVC"));
}

TEST_F(Browser, TheRootIsCalledByItsSlash) {
    start();
    controller->openFolder("/");
    EXPECT_EQ(view<QAbstractButton>("lblFolder").text(), "/");
    EXPECT_EQ(view<QWidget>("lblFolder").accessibleName(), "Folder /");
}

TEST_F(Browser, ADoubleClickEntersAFolderAndRemembersIt) {
    fs::create_directory(folder / "takes/Old");
    start();
    doubleClickRow("Old");
    EXPECT_EQ(view<QAbstractButton>("lblFolder").text(), "Old");
    EXPECT_EQ(defaults.stringForKey("UD_LAST_OPEN_FOLDER"), (folder / "takes/Old").string());
    desktop.click(view<QWidget>("btnGoUp"), {12, 12});
    EXPECT_EQ(view<QAbstractButton>("lblFolder").text(), "takes");
}

TEST_F(Browser, ReturnOpensTheSelectedRow) {
    fs::create_directory(folder / "takes/Old");
    start();
    desktop.tap("Return");
    EXPECT_EQ(view<QAbstractButton>("lblFolder").text(), "takes");
    clickRow("Old");
    desktop.tap("Return");
    EXPECT_EQ(view<QAbstractButton>("lblFolder").text(), "Old");
}

TEST_F(Browser, HomeAndEndLeadToTheFirstAndTheLastRow) {
    for (const char* const name : {"a.wav", "b.wav", "c.wav"}) {
        addTake(name, 1);
    }
    start();
    desktop.tap("End");
    EXPECT_EQ(selectedRow(), "c.wav");
    desktop.tap("Home");
    EXPECT_EQ(selectedRow(), "a.wav");
}

TEST_F(Browser, TheFolderIsChosenByAClickOnItsNameOrTheButton) {
    fs::create_directory(folder / "other");
    start();
    desktop.click(view<QWidget>("lblFolder"), {10, 10});
    EXPECT_EQ(choosingBeganIn, folder / "takes");
    EXPECT_EQ(view<QAbstractButton>("lblFolder").text(), "takes"); // cancelled
    chosenFolder = folder / "other";
    desktop.click(view<QWidget>("btnOpenFolder"), {12, 12});
    EXPECT_EQ(view<QAbstractButton>("lblFolder").text(), "other");
}

TEST_F(Browser, ANewFileAppearsAndTheSelectionStaysWithItsName) {
    addTake("m.wav", 1);
    start();
    clickRow("m.wav");
    addTake("a.wav", 1);
    EXPECT_TRUE(Desktop::waitFor([this] { return rows().size() == 2; }));
    EXPECT_EQ(selectedRow(), "m.wav");
}

TEST_F(Browser, ListingAnewStaysWhereItWasScrolledTo) {
    for (int i = 10; i < 60; ++i) {
        addTake(std::to_string(i) + ".wav", 1);
    }
    start();
    clickRow("10.wav");
    QScrollBar& scroller = *view<QTableView>("tableFile").verticalScrollBar();
    ASSERT_GT(scroller.maximum(), 20);
    scroller.setValue(20);
    controller->updateFileBrowser();
    EXPECT_EQ(scroller.value(), 20);
    addTake("99.wav", 1);
    controller->updateFileBrowser();
    desktop.settle();
    EXPECT_EQ(rows().size(), 51);
    EXPECT_EQ(scroller.value(), 20);
    EXPECT_EQ(selectedRow(), "10.wav");
}

TEST_F(Browser, AnotherFolderIsShownFromItsTop) {
    fs::create_directory(folder / "other");
    for (int i = 10; i < 60; ++i) {
        addTake(std::to_string(i) + ".wav", 1);
        folder.file("other/x" + std::to_string(i) + ".wav", Bytes(1));
    }
    start();
    QScrollBar& scroller = *view<QTableView>("tableFile").verticalScrollBar();
    scroller.setValue(20);
    chosenFolder = folder / "other";
    controller->txtFolder_Click();
    desktop.settle();
    EXPECT_EQ(scroller.value(), 0);
}

TEST_F(Browser, ViewsHearNothingOfAListingWithoutNews) {
    addTake("take.wav", 1);
    start();
    int resets = 0;
    QObject::connect(view<QTableView>("tableFile").model(), &QAbstractItemModel::modelReset,
                     [&] { ++resets; });
    controller->updateFileBrowser();
    EXPECT_EQ(resets, 0);
    fs::create_directory(folder / "takes/take2.wav");
    controller->updateFileBrowser();
    EXPECT_EQ(resets, 1);
    fs::remove(folder / "takes/take2.wav");
    addTake("take2.wav", 1); // a file in its place
    controller->updateFileBrowser();
    EXPECT_EQ(resets, 2);
}

TEST_F(Browser, AFolderThatVanishesGivesWayToTheDesktop) {
    start();
    fs::remove_all(folder / "takes");
    EXPECT_TRUE(Desktop::waitFor(
        [this] { return view<QAbstractButton>("lblFolder").text() == "Desktop"; }));
    fs::create_directory(folder / "takes");
    addTake("back.wav", 1);
    EXPECT_TRUE(Desktop::waitFor([this] { return rows() == QStringList{"back.wav"}; }));
}

TEST_F(Browser, OnlyTheLeftButtonOpens) {
    fs::create_directory(folder / "takes/Old");
    start();
    desktop.moveTo(*view<QTableView>("tableFile").viewport(), middleOfRow("Old"));
    for (int i = 0; i < 2; ++i) {
        desktop.press(Desktop::Button::Right);
        desktop.release(Desktop::Button::Right);
    }
    EXPECT_EQ(view<QAbstractButton>("lblFolder").text(), "takes");
}

TEST_F(Browser, AFolderThatIsDroppedIsListed) {
    fs::create_directory(folder / "other");
    start();
    EXPECT_TRUE(drop(folder / "other", Qt::CopyAction));
    desktop.settle();
    EXPECT_EQ(view<QAbstractButton>("lblFolder").text(), "other");
    EXPECT_EQ(defaults.stringForKey("UD_LAST_OPEN_FOLDER"), (folder / "other").string());
}

TEST_F(Browser, ARecordingThatIsDroppedIsOpened) {
    fs::create_directory(folder / "other");
    const fs::path take = addTake("take.wav");
    fs::rename(take, folder / "other/take.wav");
    start();
    EXPECT_TRUE(drop(folder / "other/take.wav", Qt::CopyAction));
    desktop.settle();
    EXPECT_EQ(text("lblFileName"), "take.wav");
    EXPECT_EQ(view<QAbstractButton>("lblFolder").text(), "takes");
}

TEST_F(Browser, WhoDropsAFileThatIsRefusedDoesNotWaitForTheUser) {
    folder.file("takes/text.wav", test::text("no recording"));
    start();
    bool isAnswered = false;
    controller->doors.showAlert = [&](const QString& text) {
        EXPECT_TRUE(isAnswered);
        alerts.push_back(text);
    };
    EXPECT_TRUE(drop(folder / "takes/text.wav", Qt::CopyAction));
    isAnswered = true;
    EXPECT_TRUE(Desktop::waitFor([this] { return !alerts.empty(); }));
}

TEST_F(Browser, NothingThatIsDroppedIsTakenAway) {
    fs::create_directory(folder / "other");
    start();
    EXPECT_EQ(drop(folder / "other", Qt::CopyAction | Qt::MoveAction), Qt::CopyAction);
    EXPECT_EQ(drop(folder / "other", Qt::MoveAction), std::nullopt);
}

TEST_F(Browser, ARecordingIsOpenedAndPlayedAtOnce) {
    addTake("take.wav");
    start();
    doubleClickRow("take.wav");
    EXPECT_EQ(text("lblFileName"), "take.wav");
    EXPECT_EQ(text("lblTimeCurrent"), "00:00:00");
    EXPECT_EQ(text("lblTimeTotal"), "00:00:02");
    EXPECT_EQ(view<QWidget>("btnPlayPause").accessibleName(), "Pause");
    for (const char* const name :
         {"btnPlayPause", "btnExport", "sliderTime", "sliderGain", "imgDevice"}) {
        EXPECT_TRUE(view<QWidget>(name).isEnabled()) << name;
    }
    EXPECT_TRUE(view<AngleViewer>("sliderStereo").enable());
    EXPECT_TRUE(view<GainTickTitle>("tickOfGain").enable());
    const std::vector<float> heard = sound.pull(1000);
    ASSERT_EQ(heard.size(), 2000U);
    EXPECT_EQ(heard[0], 0.25F); // half of full scale at the volume 0.5
}

TEST_F(Browser, APlainRecordingHasNoStereoWidthButKeepsTheAngle) {
    addTake("plain.wav", 4800, plainHistory);
    start();
    view<AngleViewer>("sliderStereo").setNewAngle(90);
    doubleClickRow("plain.wav");
    EXPECT_FALSE(view<AngleViewer>("sliderStereo").enable());
    EXPECT_FALSE(view<QWidget>("imgDevice").isEnabled());
    EXPECT_TRUE(view<QWidget>("sliderGain").isEnabled());
    EXPECT_EQ(view<AngleViewer>("sliderStereo").angle(), 90);
}

TEST_F(Browser, AFileThatIsNoRecordingIsRefusedAndTheOldOneIsGone) {
    addTake("take.wav");
    folder.file("takes/text.wav", test::text("no recording"));
    start();
    doubleClickRow("take.wav");
    doubleClickRow("text.wav");
    EXPECT_THAT(alerts, ElementsAre("File not supported."));
    EXPECT_EQ(text("lblFileName"), "");
    EXPECT_EQ(text("lblTimeCurrent"), "--:--:--");
    EXPECT_EQ(text("lblTimeTotal"), "--:--:--");
    EXPECT_EQ(view<QWidget>("btnPlayPause").accessibleName(), "Play");
    for (const char* const name :
         {"btnPlayPause", "btnExport", "sliderTime", "sliderGain", "imgDevice"}) {
        EXPECT_FALSE(view<QWidget>(name).isEnabled()) << name;
    }
    EXPECT_FALSE(view<AngleViewer>("sliderStereo").enable());
    EXPECT_EQ(sound.open, 0U);
}

TEST_F(Browser, AFileThatHasVanishedIsIgnored) {
    const fs::path take = addTake("take.wav", 1);
    start();
    fs::remove(take);
    doubleClickRow("take.wav");
    EXPECT_THAT(alerts, ElementsAre());
    EXPECT_EQ(text("lblFileName"), "");
}

TEST_F(Browser, EveryViewHasItsNameAndSaysWhatItIs) {
    start();
    for (const char* const name :
         {"lblFolder", "tableFile", "btnExport", "btnVolume", "btnPlayPause", "sliderVolume",
          "sliderTime", "sliderGain", "sliderStereo", "tickOfLevel", "tickOfGain", "lvlRight",
          "lvlLeft", "popupAutoPow", "popupBattery", "listBatteryCover", "listAutoPowOffCover"}) {
        EXPECT_FALSE(view<QWidget>(name).accessibleName().isEmpty()) << name;
    }
    for (const char* const name : {"lblTimeTotal", "lblTimeCurrent", "viewRightBG", "viewLeftBG",
                                   "viewPathBG", "lblFileName", "lblGain", "lblUsed", "lblRemain",
                                   "lblVersion", "lblConnect", "imgH8", "lblStereo", "imgDevice"}) {
        EXPECT_TRUE(view<QWidget>(name).isVisible()) << name;
    }
}

} // namespace
} // namespace deckmate::test
