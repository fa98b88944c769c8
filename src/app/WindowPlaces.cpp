#include "app/WindowPlaces.h"

namespace deckmate {

QRect mainWindowPlace(const QRectF& visibleFrame) {
    return {originCentredOn(visibleFrame, mainWindowSize), mainWindowSize};
}

QPoint originCentredOn(const QRectF& frame, const QSizeF& size) {
    const QPointF origin(frame.x() + (frame.width() - size.width()) / 2,
                         frame.y() + (frame.height() - size.height()) / 2);
    return origin.toPoint();
}

} // namespace deckmate
