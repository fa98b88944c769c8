#include "app/Alert.h"

#include "app/DialogParts.h"

#include <QMessageBox>
#include <QPointer>
#include <QPushButton>
#include <QString>

namespace deckmate {

namespace {

constexpr int shortestText = 29 * grid;
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
    layOutMessage(*alert, shortestText);
    if (parent != nullptr) {
        alert->setWindowTitle(parent->window()->windowTitle());
    }
    alert->exec();
    delete alert;
}

} // namespace deckmate
