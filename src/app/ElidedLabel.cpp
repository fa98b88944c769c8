#include "app/ElidedLabel.h"

#include "app/DialogParts.h"

#include <QHelpEvent>
#include <QPainter>
#include <QToolTip>

namespace deckmate {

ElidedLabel::ElidedLabel(QWidget* parent) : QLabel(parent) {
    setTextFormat(Qt::PlainText);
}

QSize ElidedLabel::minimumSizeHint() const {
    return {0, QLabel::minimumSizeHint().height()};
}

bool ElidedLabel::event(QEvent* event) {
    if (event->type() == QEvent::ToolTip) {
        const bool isCut = fontMetrics().horizontalAdvance(text()) > width();
        QToolTip::showText(static_cast<QHelpEvent*>(event)->globalPos(),
                           isCut ? asToolTip(text()) : QString(), this);
        return true;
    }
    return QLabel::event(event);
}

void ElidedLabel::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.drawText(rect(), static_cast<int>(alignment()) | Qt::TextSingleLine,
                     fontMetrics().elidedText(text(), Qt::ElideMiddle, width()));
}

} // namespace deckmate
