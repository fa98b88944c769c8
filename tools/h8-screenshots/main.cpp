// h8-screenshots FOLDER: draws each window of the application into a PNG file of its name.
#include "StyleBoard.h"

#include "app/AboutVC.h"
#include "app/Alert.h"
#include "app/ExportVC.h"
#include "app/IntroductionVC.h"
#include "app/Look.h"
#include "app/NodeviceVC.h"

#include <cstdlib>
#include <iostream>
#include <memory>

#include <QApplication>
#include <QDir>
#include <QList>
#include <QPixmap>
#include <QProgressBar>
#include <QTimer>
#include <QWidget>

namespace {

using namespace deckmate;

bool save(QWidget& window, const QDir& folder, const char* name) {
    window.show();
    QCoreApplication::processEvents();
    const QString path = folder.filePath(QString(name) + ".png");
    if (!window.grab().save(path)) {
        std::cerr << "h8-screenshots: can't write " << path.toStdString() << '\n';
        return false;
    }
    return true;
}

/// An alert returns only when it was closed.
bool saveAlert(const QDir& folder) {
    bool isSaved = false;
    QTimer timer;
    timer.setSingleShot(true);
    QObject::connect(&timer, &QTimer::timeout, [&] {
        QWidget* const alert = QApplication::activeModalWidget();
        isSaved = save(*alert, folder, "alert");
        alert->close();
    });
    timer.start(0);
    showAlert(nullptr, "File not supported.");
    return isSaved;
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
    const auto style = makeStyleBoard();
    return save(about, folder, "about") && save(introduction, folder, "introduction") &&
           save(introductionFromMenu, folder, "introduction-from-menu") &&
           save(noDevice, folder, "no-device") && save(exportSheet, folder, "export") &&
           save(exporting, folder, "exporting") && saveAlert(folder) &&
           save(*style, folder, "style");
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
