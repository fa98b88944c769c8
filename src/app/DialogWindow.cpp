#include "app/DialogWindow.h"

#include "app/WindowPlaces.h"
#include "controls/Resources.h"

#include <QLayout>
#include <QPalette>

namespace deckmate {

DialogWindow::DialogWindow(QWidget* parent) : QDialog(parent) {
    setModal(true);
}

void DialogWindow::setVisible(bool isVisible) {
    if (isVisible && isHidden()) {
        viewWillAppear();
    }
    QDialog::setVisible(isVisible);
}

void DialogWindow::setUpWindow(const QString& title) {
    setWindowFlags(Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint |
                   Qt::WindowSystemMenuHint | Qt::WindowCloseButtonHint);
    setWindowTitle(title);
    QPalette colours = palette();
    colours.setColor(QPalette::Window, colour("AppBG"));
    setPalette(colours);
    if (layout() != nullptr) {
        layout()->setSizeConstraint(QLayout::SetFixedSize);
    }
    centre();
}

void DialogWindow::centre() {
    ensurePolished();
    if (layout() != nullptr) {
        layout()->activate();
    }
    const QRect place(originCentredOn(parentFrame_, size()), size());
    setGeometry(place);
}

void DialogWindow::dismissController() {
    reject();
}

} // namespace deckmate
