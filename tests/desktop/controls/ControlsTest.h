// One control on the application's background, and what it tells its owner.
#pragma once

#include "controls/Control.h"
#include "controls/Resources.h"
#include "desktop/support/Desktop.h"

#include <gtest/gtest.h>

#include <QApplication>
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
