#include "app/Alert.h"

#include "app/DialogParts.h"

#include <QLabel>
#include <QLayout>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>
#include <QString>

namespace deckmate {

namespace {

constexpr int shortestText = 29 * grid;
constexpr int indent = 21; ///< the toolkit's, before a text without an icon

/// Without the gap that the toolkit leaves for a message above the informative text.
void layOut(QMessageBox& alert) {
    for (QLabel* const label : alert.findChildren<QLabel*>()) {
        if (label->text().isEmpty()) {
            label->hide();
        } else {
            label->setContentsMargins(0, 0, 0, grid);
            label->setMinimumWidth(shortestText);
        }
    }
    alert.layout()->setContentsMargins(3 * grid - indent, 3 * grid, 3 * grid, 2 * grid);
}

} // namespace

void showAlert(QWidget* parent, const QString& informativeText) {
    // Not on the stack: the parent may be destroyed, with the alert, while the alert is up.
    const QPointer<QMessageBox> alert(new QMessageBox(parent));
    alert->setObjectName("alert");
    alert->setIcon(QMessageBox::NoIcon);
    alert->setInformativeText(informativeText);
    QPushButton* const button = alert->addButton("Ok", QMessageBox::AcceptRole);
    button->setObjectName("btnOk");
    alert->setEscapeButton(button);
    layOut(*alert);
    if (parent != nullptr) {
        alert->setWindowTitle(parent->window()->windowTitle());
    }
    alert->exec();
    delete alert;
}

} // namespace deckmate
