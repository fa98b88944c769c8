#include "app/ClickableArea.h"

#include "controls/Resources.h"

#include <QKeyEvent>
#include <QPainter>

namespace deckmate {

namespace {

constexpr int textInset = 4;
constexpr qreal radius = 4;

} // namespace

ClickableArea::ClickableArea(QWidget* parent) : QAbstractButton(parent) {
    setFocusPolicy(Qt::TabFocus);
    setCursor(Qt::PointingHandCursor);
}

QSize ClickableArea::sizeHint() const {
    return {fontMetrics().horizontalAdvance(text()) + 2 * textInset,
            fontMetrics().height() + 2 * textInset};
}

void ClickableArea::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    const QRect place = rect().adjusted(textInset, 0, -textInset, 0);
    painter.drawText(place, static_cast<int>(Qt::AlignLeft | Qt::AlignVCenter) | Qt::TextSingleLine,
                     fontMetrics().elidedText(text(), Qt::ElideMiddle, place.width()));
    if (hasFocus()) {
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(QPen(colour("Focus"), 2));
        painter.drawRoundedRect(QRectF(rect()).adjusted(1, 1, -1, -1), radius, radius);
    }
}

void ClickableArea::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
        click();
        return;
    }
    QAbstractButton::keyPressEvent(event);
}

} // namespace deckmate
