// The one place where a view's upward y axis meets Qt's downward one.
#pragma once

#include "controls/ViewGeometry.h"

#include <QPointF>
#include <QRectF>

namespace deckmate {

/// From one system to the other in a view of this height; the same either way.
inline QPointF fromView(ViewPoint point, double height) {
    return {point.x, height - point.y};
}

inline ViewPoint toView(QPointF point, double height) {
    return {point.x(), height - point.y()};
}

inline QRectF fromView(const ViewRect& rect, double height) {
    return {rect.x, height - rect.y - rect.height, rect.width, rect.height};
}

} // namespace deckmate
