#include "desktop/monkey/Scene.h"

#include <array>
#include <span>

#include <QAbstractButton>
#include <QApplication>
#include <QMainWindow>
#include <QMenuBar>
#include <QTableView>

namespace deckmate::test {

namespace {

/// More often than the others, a user goes for those that are named twice.
constexpr std::array controls = {
    "btnPlayPause",     "btnPlayPause",        "btnVolume",    "btnExport",    "btnGoUp",
    "lblFolder",        "btnOpenFolder",       "sliderStereo", "sliderStereo", "sliderGain",
    "sliderTime",       "sliderTime",          "sliderVolume", "sliderVolume", "tickOfGain",
    "tickOfLevel",      "popupBattery",        "popupBattery", "popupAutoPow", "popupAutoPow",
    "listBatteryCover", "listAutoPowOffCover", "tableFile",    "lvlLeft",      "lblFileName",
};

constexpr std::array handles = {"sliderTime", "sliderTime", "sliderStereo", "sliderGain",
                                "sliderVolume"};

Place placeOf(const QWidget& widget, const QRect& rect) {
    const QWidget& window = *widget.window();
    return {widget.objectName().toStdString(), static_cast<std::uint32_t>(window.winId()),
            QRectF(QRect(widget.mapTo(&window, rect.topLeft()), rect.size()))};
}

void addVisible(const QMainWindow& window, std::span<const char* const> names,
                std::vector<Place>& places) {
    for (const char* const name : names) {
        const auto* const control = window.findChild<QWidget*>(name);
        if (control->isVisible()) {
            places.push_back(placeOf(*control, control->rect()));
        }
    }
}

void addRows(const QMainWindow& window, std::vector<Place>& rows) {
    const auto* const table = window.findChild<QTableView*>("tableFile");
    for (int row = 0; row < table->model()->rowCount(); ++row) {
        const QModelIndex index = table->model()->index(row, 0);
        const QRect rect = table->visualRect(index) & table->viewport()->rect();
        if (!rect.isEmpty()) {
            rows.push_back(placeOf(*table->viewport(), rect));
            rows.back().name = index.data().toString().toStdString();
        }
    }
}

void addMenus(QMainWindow& window, std::vector<Place>& menus) {
    const QMenuBar& bar = *window.menuBar();
    for (const QAction* const action : bar.actions()) {
        menus.push_back(placeOf(bar, bar.actionGeometry(const_cast<QAction*>(action))));
        menus.back().name = action->text().toStdString();
    }
}

} // namespace

QPointF Place::at(double x, double y) const {
    return {rect.x() + x * (rect.width() - 1), rect.y() + y * (rect.height() - 1)};
}

Scene sceneOf(QMainWindow& window) {
    Scene scene;
    scene.window = placeOf(window, window.rect());
    addVisible(window, controls, scene.controls);
    addVisible(window, handles, scene.handles);
    addRows(window, scene.rows);
    addMenus(window, scene.menus);
    const QWidget* const menu = QApplication::activePopupWidget();
    const QWidget* const dialog = QApplication::activeModalWidget();
    scene.hasMenu = menu != nullptr;
    scene.hasDialog = dialog != nullptr;
    scene.dialog = dialog != nullptr ? dialog->objectName().toStdString() : "";
    if (menu != nullptr) {
        scene.front = placeOf(*menu, menu->rect());
    } else if (dialog != nullptr) {
        scene.front = placeOf(*dialog, dialog->rect());
        for (const auto* const button : dialog->findChildren<QAbstractButton*>()) {
            if (button->isVisible()) {
                scene.buttons.push_back(placeOf(*button, button->rect()));
            }
        }
    }
    return scene;
}

} // namespace deckmate::test
