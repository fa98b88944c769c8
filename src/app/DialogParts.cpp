#include "app/DialogParts.h"

#include <QBoxLayout>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>

namespace deckmate {

QLabel* makeLabel(const QString& text, const char* role, QWidget* parent) {
    auto* const label = new QLabel(parent);
    label->setTextFormat(Qt::PlainText);
    label->setText(text);
    label->setProperty("role", role);
    return label;
}

QLabel* makeParagraph(const QString& text, const char* role, int width, QWidget* parent) {
    QLabel* const label = makeLabel(text, role, parent);
    label->setWordWrap(true);
    label->setFixedWidth(width);
    label->setAlignment(Qt::AlignLeading | Qt::AlignTop);
    // The height that a wrapped label asks for by itself is that of another width.
    label->ensurePolished();
    label->setFixedHeight(label->heightForWidth(width));
    return label;
}

QString asToolTip(const QString& text) {
    return QStringLiteral("<span>%1</span>").arg(text.toHtmlEscaped());
}

QLayout* makeButtonRow(QWidget* beside, QPushButton* button) {
    auto* const row = new QHBoxLayout;
    row->setSpacing(grid);
    if (beside != nullptr) {
        row->addWidget(beside);
    }
    row->addStretch();
    row->addWidget(button);
    return row;
}

void layOutMessage(QMessageBox& box, int width) {
    constexpr int indent = 21; // the toolkit's, before a text without an icon
    for (QLabel* const label : box.findChildren<QLabel*>()) {
        // Without the gap that the toolkit leaves for a text that isn't there.
        if (label->text().isEmpty()) {
            label->hide();
        } else {
            label->setContentsMargins(0, 0, 0, grid);
            label->setMinimumWidth(width);
        }
    }
    box.layout()->setContentsMargins(3 * grid - indent, 3 * grid, 3 * grid, 2 * grid);
}

QPushButton* makeMainButton(const QString& text, const QString& name, QWidget* parent) {
    auto* const button = new QPushButton(text, parent);
    button->setObjectName(name);
    button->setDefault(true);
    return button;
}

} // namespace deckmate
