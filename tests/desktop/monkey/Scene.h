// What a user sees of the windows, as places to point at.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <QPointF>
#include <QRectF>

class QMainWindow;

namespace deckmate::test {

/// Something to point at; the rectangle in points of the window.
struct Place {
    std::string name;
    std::uint32_t window = 0;
    QRectF rect;

    /// At fractions of width and height.
    QPointF at(double x, double y) const;
};

/// Thread: any; made on the main one.
struct Scene {
    Place window; ///< the main window
    std::vector<Place> controls;
    std::vector<Place> handles; ///< those that are made to be dragged
    std::vector<Place> rows;
    std::vector<Place> menus;   ///< titles in the menu bar
    bool hasMenu = false;       ///< a menu or a pop-up is open
    bool hasDialog = false;     ///< a modal window is
    Place front;                ///< that one
    std::string dialog;         ///< the modal window's name
    std::vector<Place> buttons; ///< in the modal window
};

Scene sceneOf(QMainWindow& window);

} // namespace deckmate::test
