// h8-screenshots FOLDER: draws each window of the application into a PNG file of its name.
#include "MainWindowBoard.h"
#include "StyleBoard.h"

#include "app/AboutVC.h"
#include "app/Alert.h"
#include "app/ExportVC.h"
#include "app/IntroductionVC.h"
#include "app/Look.h"
#include "app/NodeviceVC.h"
#include "app/SaveDialog.h"

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <iostream>
#include <memory>

#include <QAbstractItemView>
#include <QApplication>
#include <QDir>
#include <QFile>
#include <QList>
#include <QPixmap>
#include <QProgressBar>
#include <QTimer>
#include <QWidget>

namespace {

using namespace deckmate;

bool write(const QPixmap& picture, const QDir& folder, const char* name) {
    const QString path = folder.filePath(QString(name) + ".png");
    if (!picture.save(path)) {
        std::cerr << "h8-screenshots: can't write " << path.toStdString() << '\n';
        return false;
    }
    return true;
}

bool save(QWidget& window, const QDir& folder, const char* name) {
    window.show();
    QCoreApplication::processEvents();
    return write(window.grab(), folder, name);
}

bool saveFocus(QWidget& board, const QDir& folder) {
    board.show();
    board.activateWindow();
    QCoreApplication::processEvents();
    return write(focusedEverywhere(board), folder, "focus");
}

void wait(const std::function<bool()>& condition) {
    while (!condition()) {
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
}

/// Of a window that keeps the program until it is closed: it is closed once it is saved.
bool saveModal(const QDir& folder, const char* name, const std::function<void()>& present) {
    constexpr int interval = 10;
    bool isOver = false;
    bool isSaved = false;
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, [&] {
        if (QWidget* const window = QApplication::activeModalWidget()) {
            timer.stop();
            isSaved = save(*window, folder, name);
            window->close();
            isOver = true;
        }
    });
    timer.start(interval);
    present();
    wait([&] { return isOver; });
    return isSaved;
}

bool saveAlert(const QDir& folder) {
    return saveModal(folder, "alert", [] { showAlert(nullptr, "File not supported."); });
}

/// A folder whose name, which the save dialog shows, is the same for everyone.
class Recordings {
public:
    Recordings() : folder_(QDir(QDir::tempPath()).filePath("Recordings")) {
        if (!QDir().mkdir(folder_.path())) {
            std::cerr << "h8-screenshots: " << folder_.path().toStdString()
                      << " is in the way or can't be made\n";
            std::exit(EXIT_FAILURE);
        }
        folder_.mkdir("2026-11 Harbour");
        folder_.mkdir("Rehearsals");
        for (const char* const name : {"H8_0001.WAV", "H8_0002.WAV", "H8_0002_Decode.WAV"}) {
            QFile file(folder_.filePath(name));
            static_cast<void>(file.open(QIODevice::WriteOnly));
        }
        // Shown as well.
        const std::chrono::sys_seconds day =
            std::chrono::sys_days{std::chrono::year{2026} / 11 / 1};
        const auto written = std::chrono::file_clock::from_sys(day);
        for (const QString& name : folder_.entryList(QDir::AllEntries | QDir::NoDotAndDotDot)) {
            std::filesystem::last_write_time(folder_.filePath(name).toStdString(), written);
        }
    }
    ~Recordings() { folder_.removeRecursively(); }
    Recordings(const Recordings&) = delete;
    Recordings& operator=(const Recordings&) = delete;
    Recordings(Recordings&&) = delete;
    Recordings& operator=(Recordings&&) = delete;

    QString path() const { return folder_.path(); }
    static constexpr int entries = 5;

private:
    QDir folder_;
};

/// And the question about the file that has the proposed name already.
bool saveSaveDialog(const QDir& folder) {
    const Recordings recordings;
    const auto path = recordings.path().toStdString();
    SaveDialog dialog(path + "/H8_0002.WAV", path, nullptr);
    dialog.show();
    // Listed by a thread of the dialog's.
    const auto* const list = dialog.findChild<QAbstractItemView*>("listView");
    wait([&] { return list->model()->rowCount(list->rootIndex()) == Recordings::entries; });
    return save(dialog, folder, "save-dialog") &&
           saveModal(folder, "overwrite", [&] { dialog.accept(); });
}

/// As the sheet looks in the middle of an export, which no event reaches.
void showExporting(ExportVC& sheet) {
    for (QWidget* const part : sheet.findChildren<QWidget*>(Qt::FindDirectChildrenOnly)) {
        part->setEnabled(part->objectName() == "progress" || part->objectName() == "lblFileName");
    }
    auto* const progress = sheet.findChild<QProgressBar*>("progress");
    progress->setValue(progress->maximum() * 2 / 5);
    progress->show();
}

bool saveAll(const QDir& folder) {
    AboutVC about;
    about.setVersionString("1.0.12");
    IntroductionVC introduction;
    IntroductionVC introductionFromMenu;
    introductionFromMenu.setFromMenu(true);
    NodeviceVC noDevice;
    ExportVC exportSheet;
    exportSheet.setExporter(std::make_shared<Export>("H8_0002.WAV"));
    ExportVC exporting;
    exporting.setExporter(std::make_shared<Export>("H8_0002.WAV"));
    showExporting(exporting);
    const auto mainWindow = makeMainWindowBoard();
    const auto style = makeStyleBoard();
    return save(about, folder, "about") && save(introduction, folder, "introduction") &&
           save(introductionFromMenu, folder, "introduction-from-menu") &&
           save(noDevice, folder, "no-device") && save(exportSheet, folder, "export") &&
           save(exporting, folder, "exporting") && saveAlert(folder) && saveSaveDialog(folder) &&
           save(*style, folder, "style") && save(*mainWindow, folder, "main-window") &&
           saveFocus(*mainWindow, folder);
}

} // namespace

int main(int count, char** arguments) {
    QApplication application(count, arguments);
    if (count != 2) {
        std::cerr << "usage: h8-screenshots FOLDER\n";
        return EXIT_FAILURE;
    }
    applyLook(application);
    return saveAll(QDir(arguments[1])) ? EXIT_SUCCESS : EXIT_FAILURE;
}
