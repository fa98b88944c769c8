#include "app/DialogWindow.h"

#include "app/WindowPlaces.h"
#include "controls/Resources.h"

#include <QLayout>
#include <QPalette>

namespace deckmate {

namespace {

/// Assistive programs read the widgets of a window in the order in which they are stacked.
void stackAsRead(const QLayout& layout) {
    for (int i = 0; i < layout.count(); ++i) {
        if (QWidget* const widget = layout.itemAt(i)->widget()) {
            widget->raise();
        } else if (const QLayout* const inner = layout.itemAt(i)->layout()) {
            stackAsRead(*inner);
        }
    }
}

} // namespace

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
        stackAsRead(*layout());
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
