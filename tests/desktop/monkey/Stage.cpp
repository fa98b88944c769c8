#include "desktop/monkey/Stage.h"

#include <algorithm>

#include <QApplication>
#include <QDialog>
#include <QDropEvent>
#include <QMainWindow>
#include <QMenuBar>
#include <QMimeData>
#include <QUrl>

namespace deckmate::test {

namespace {

constexpr auto lastFolderKey = "UD_LAST_OPEN_FOLDER";

/// The way out that a monkey must not find.
void takeQuitAway(QMainWindow& window) {
    for (const QAction* const menu : window.menuBar()->actions()) {
        for (QAction* const action : menu->menu()->actions()) {
            if (action->text() == "Quit") {
                action->setEnabled(false);
            }
        }
    }
}

} // namespace

Stage::Stage(const std::filesystem::path& folder, bool hasEventLists) : midi_(hasEventLists) {
    defaults_.setString(folder.string(), lastFolderKey);
    windows_ = std::make_unique<WindowController>();
    QMainWindow& window = windows_->window();
    controller_ = std::make_unique<ViewController>(window);
    controller_->doors.chooseFolder = [this](const auto&) { return chosen_; };
    controller_->doors.openInBrowser = [](const QString&) {};
    rules_ = std::make_unique<WindowRules>(window);
    takeQuitAway(window);
    windows_->showWindow();
}

bool Stage::hasKeyboard(const char* name) {
    const QWidget* const active = QApplication::activeWindow();
    return active != nullptr && active->objectName() == name;
}

bool Stage::hasDialogs() {
    const QWidgetList windows = QApplication::topLevelWidgets();
    return std::any_of(windows.begin(), windows.end(), [](const QWidget* window) {
        return qobject_cast<const QDialog*>(window) != nullptr;
    });
}

void Stage::tellRules() {
    rules_->setRecorderIn(recorder_.isPluggedIn());
    rules_->setFolder(QString::fromStdString(lastFolder().filename().string()));
}

std::vector<std::string> Stage::broken() {
    tellRules();
    return rules_->broken();
}

std::vector<std::string> Stage::brokenSince() {
    return rules_->brokenSince();
}

std::filesystem::path Stage::lastFolder() const {
    return defaults_.stringForKey(lastFolderKey).value_or("");
}

void Stage::drop(const std::filesystem::path& path) {
    QMimeData data;
    data.setUrls({QUrl::fromLocalFile(QString::fromStdString(path.string()))});
    const QPoint place(500, 300);
    QDragEnterEvent enter(place, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QDropEvent event(place, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(&windows_->window(), &enter);
    QCoreApplication::sendEvent(&windows_->window(), &event);
}

} // namespace deckmate::test
