// The images and colours of the application, by name.
#pragma once

#include <QColor>
#include <QIcon>
#include <QPixmap>
#include <QSize>
#include <QString>

class QPainter;
class QRectF;

namespace deckmate {

/// "AppBG", "AppBGLight", "ControlColor", "WHITE" or, around what has the keyboard, "Focus";
/// invalid for any other name.
QColor colour(const QString& name);

/// The image drawn over the whole rectangle, sharp at any device pixel ratio; nothing for a name
/// that no image has. Thread: main.
void drawImage(QPainter& painter, const QString& name, const QRectF& place);

/// The image stretched to `size`, in points, with as many pixels as the ratio asks for; null for an
/// unknown name or an empty size. Thread: main.
QPixmap image(const QString& name, const QSize& size, qreal devicePixelRatio);

/// Of images on what can't act.
inline constexpr qreal disabledOpacity = 0.4;

/// The image as buttons and lists take it, drawn anew for each size and faded on those that can't
/// act; null for an unknown name. Thread: main.
QIcon icon(const QString& name);

} // namespace deckmate
