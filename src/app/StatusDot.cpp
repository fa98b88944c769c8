#include "app/StatusDot.h"

#include <QPainter>

namespace deckmate {

namespace {

constexpr QColor connected(0x4C, 0xD0, 0x7D);
constexpr QColor notConnected(0x58, 0x58, 0x58);

} // namespace

void StatusDot::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(isEnabled() ? connected : notConnected);
    painter.drawEllipse(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5));
}

} // namespace deckmate
