// One control on the application's background, and what it tells its owner.
#pragma once

#include "controls/Control.h"
#include "controls/Resources.h"
#include "desktop/support/Desktop.h"

#include <algorithm>
#include <gtest/gtest.h>

#include <QApplication>
#include <QFont>
#include <QWidget>

namespace deckmate::test {

class ControlsTest : public testing::Test {
protected:
    ControlsTest() {
        window.resize(500, 440);
        window.setAutoFillBackground(true);
        QPalette palette = window.palette();
        palette.setColor(QPalette::Window, background());
        window.setPalette(palette);
        before.setFocusPolicy(Qt::StrongFocus);
        before.setFocus();
    }

    static QColor background() { return colour("AppBGLight"); }
    static QColor trackColor() { return {88, 88, 88}; }
    /// Waits until the X server shows a colour; NO if the control didn't ask to be painted.
    static bool isShown(const QWidget& control, QPointF place, const QColor& wanted) {
        return Desktop::waitFor([&] { return colourAt(Desktop::shown(control), place) == wanted; });
    }
    /// The brightest pixel's red: of labels, that of a letter's middle.
    static int brightest(const QImage& image) {
        int found = 0;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                found = std::max(found, image.pixelColor(x, y).red());
            }
        }
        return found;
    }
    /// With letters so thick that some pixels are nothing but letter.
    static QFont thickFont() {
        QFont font;
        font.setPixelSize(22);
        font.setBold(true);
        return font;
    }

    Desktop& desktop = Desktop::get();
    QWidget window;
    QWidget before{&window}; ///< has the keyboard until the Tab key gives it to the control
};

/// A patient user's second click counts as the second one of a double click.
class PatientClicks {
public:
    PatientClicks() : before_(QApplication::doubleClickInterval()) {
        QApplication::setDoubleClickInterval(60'000);
    }
    ~PatientClicks() { QApplication::setDoubleClickInterval(before_); }
    PatientClicks(const PatientClicks&) = delete;
    PatientClicks& operator=(const PatientClicks&) = delete;
    PatientClicks(PatientClicks&&) = delete;
    PatientClicks& operator=(PatientClicks&&) = delete;

private:
    int before_;
};

} // namespace deckmate::test
