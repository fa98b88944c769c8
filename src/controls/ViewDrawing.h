// The one place where points and rectangles of a view become Qt's, and the other way round.
#pragma once

#include "controls/ViewGeometry.h"

#include <QPointF>
#include <QRectF>

namespace deckmate {

/// From an upward y axis to a downward one in a view of this height; the same either way.
inline QPointF fromView(ViewPoint point, double height) {
    return {point.x, height - point.y};
}

inline ViewPoint toView(QPointF point, double height) {
    return {point.x(), height - point.y()};
}

inline QRectF fromView(const ViewRect& rect, double height) {
    return {rect.x, height - rect.y - rect.height, rect.width, rect.height};
}

/// Of a view whose y axis points down as well.
inline QRectF fromFlippedView(const ViewRect& rect) {
    return {rect.x, rect.y, rect.width, rect.height};
}

inline ViewRect toFlippedView(const QRectF& rect) {
    return {rect.x(), rect.y(), rect.width(), rect.height()};
}

} // namespace deckmate
