#include "app/ToolkitDoors.h"

#include "app/Alert.h"
#include "app/DialogWindow.h"

#include <QDesktopServices>
#include <QFile>
#include <QFileDialog>
#include <QUrl>

namespace deckmate {

namespace {

/// The same dialog on every desktop.
std::optional<std::filesystem::path> askForFolder(QWidget& window,
                                                  const std::filesystem::path& begin) {
    QFileDialog dialog(&window, "Choose a file", QFile::decodeName(begin.c_str()));
    dialog.setFileMode(QFileDialog::Directory);
    dialog.setOptions(QFileDialog::ShowDirsOnly | QFileDialog::DontUseNativeDialog);
    dialog.setSizeGripEnabled(true);
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) {
        return std::nullopt;
    }
    return QFile::encodeName(dialog.selectedFiles().front()).toStdString();
}

} // namespace

ToolkitDoors makeToolkitDoors(QWidget& window) {
    return {
        .chooseFolder = [&window](const auto& begin) { return askForFolder(window, begin); },
        .showAlert = [&window](const QString& text) { showAlert(&window, text); },
        .presentModally = [](DialogWindow& dialog) { dialog.exec(); },
        .openInBrowser = [](const QString& address) { QDesktopServices::openUrl(QUrl(address)); },
    };
}

} // namespace deckmate
