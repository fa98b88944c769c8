// The main window with everything behind it in a test's hands: sound, recorder, preferences,
// dialogs.
#pragma once

#include "app/DialogWindow.h"
#include "app/ViewController.h"
#include "app/WindowController.h"
#include "app/xcb/ServerEcho.h"
#include "desktop/support/Desktop.h"
#include "platform/qt/QtRunLoop.h"
#include "support/Bytes.h"
#include "support/DeviceMessages.h"
#include "support/InProcessMidi.h"
#include "support/LinkEnd.h"
#include "support/ManualSound.h"
#include "support/MemoryUserDefaults.h"
#include "support/TemporaryFolder.h"

#include <filesystem>
#include <gmock/gmock.h>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <QAbstractButton>
#include <QAbstractItemModel>
#include <QLabel>
#include <QMainWindow>
#include <QTableView>

namespace deckmate::test {

/// Thread: main.
class MainWindowTest : public testing::Test {
protected:
    MainWindowTest() {
        defaults.setString((folder / "takes").string(), "UD_LAST_OPEN_FOLDER");
        defaults.setString(std::string(runningVersion), "UD_DO_NOT_SHOW_AGAIN");
        std::filesystem::create_directory(folder / "takes");
    }

    /// Starts as the program does, and waits for the listing.
    void start() {
        windows = std::make_unique<WindowController>();
        controller = std::make_unique<ViewController>(windows->window());
        controller->doors.showAlert = [this](const QString& text) { alerts.push_back(text); };
        controller->doors.presentModally = [this](DialogWindow& dialog) {
            presented.push_back(dialog.objectName());
        };
        controller->doors.chooseFolder = [this](const std::filesystem::path& begin) {
            choosingBeganIn = begin;
            return chosenFolder;
        };
        controller->doors.openInBrowser = [this](const QString& address) { opened = address; };
        desktop.show(windows->window());
        EXPECT_TRUE(Desktop::waitFor(
            [this] { return !view<QAbstractButton>("lblFolder").text().isEmpty(); }));
    }

    template <class View>
    View& view(const char* name) {
        auto* const found = windows->window().findChild<View*>(name);
        if (found == nullptr) {
            ADD_FAILURE() << "no view " << name;
            std::abort();
        }
        return *found;
    }
    QString text(const char* label) { return view<QLabel>(label).text(); }

    /// Frames of a tone that isn't silent, as the recorder writes raw mid/side.
    std::filesystem::path addTake(const std::string& name, std::size_t frames = 96000,
                                  std::string_view history = BextTexts().history) const {
        Bytes samples;
        for (std::size_t i = 0; i < frames; ++i) {
            const Bytes frame = pcm24({0x400000, 0});
            samples.insert(samples.end(), frame.begin(), frame.end());
        }
        std::string even(history); // other readers expect a pad byte behind odd chunks
        even.resize((even.size() + 1) / 2 * 2, ' ');
        BextTexts texts;
        texts.history = even;
        return folder.file("takes/" + name, recording(samples, {}, texts));
    }

    QStringList rows() {
        QStringList names;
        const QAbstractItemModel& model = *view<QTableView>("tableFile").model();
        for (int row = 0; row < model.rowCount(); ++row) {
            names << model.index(row, 0).data().toString();
        }
        return names;
    }
    QPointF middleOfRow(const char* name) {
        auto& table = view<QTableView>("tableFile");
        const int row = static_cast<int>(rows().indexOf(name));
        return QRectF(table.visualRect(table.model()->index(row, 0))).center();
    }
    void doubleClickRow(const char* name) {
        desktop.doubleClick(*view<QTableView>("tableFile").viewport(), middleOfRow(name));
    }
    /// Keys that were released are known to be repeated or not.
    static void waitForReleases() {
        bool isHandled = false;
        const ServerEcho echo([&] { isHandled = true; });
        EXPECT_TRUE(Desktop::waitFor([&] { return isHandled; }));
    }
    void clickRow(const char* name) {
        desktop.click(*view<QTableView>("tableFile").viewport(), middleOfRow(name));
    }

    static constexpr std::string_view runningVersion = DECKMATE_TEST_VERSION;

    Desktop& desktop = Desktop::get();
    TemporaryFolder folder;
    QtRunLoop loop;
    MemoryUserDefaults defaults;
    ManualSound sound;
    InProcessMidi midi{false};
    LinkEnd linkEnd;
    std::vector<QString> alerts;
    std::vector<QString> presented;
    std::filesystem::path choosingBeganIn;
    std::optional<std::filesystem::path> chosenFolder;
    QString opened;
    std::unique_ptr<WindowController> windows;
    std::unique_ptr<ViewController> controller;
};

} // namespace deckmate::test
