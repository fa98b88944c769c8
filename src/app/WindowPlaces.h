// Where windows stand on the screen.
#pragma once

#include <QPoint>
#include <QRect>
#include <QRectF>

namespace deckmate {

inline constexpr QSize mainWindowSize{1050, 668};

/// The main window's place in the middle of what a screen has free: always of its full size, so
/// that its edges lie outside where there is less room. Points, without the window's decoration.
QRect mainWindowPlace(const QRectF& visibleFrame);

/// Where a window of this size begins that has the same middle as the frame. Points, both without
/// decoration.
QPoint originCentredOn(const QRectF& frame, const QSizeF& size);

} // namespace deckmate
