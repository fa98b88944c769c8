#include "controls/Resources.h"

#include <array>
#include <utility>

#include <QFile>
#include <QPainter>
#include <QRectF>
#include <QSvgRenderer>

namespace deckmate {

namespace {

QString pathOf(const QString& name) {
    return QStringLiteral(":/images/") + name + QStringLiteral(".svg");
}

} // namespace

QColor colour(const QString& name) {
    static const std::array<std::pair<const char*, QColor>, 5> colours = {{
        {"AppBG", QColor(0x17, 0x19, 0x1C)},
        {"AppBGLight", QColor(0x21, 0x24, 0x29)},
        {"ControlColor", QColor(0x2E, 0x32, 0x38)},
        {"WHITE", QColor(0xFF, 0xFF, 0xFF)},
        {"Focus", QColor(0x8F, 0xA3, 0xBF)},
    }};
    for (const auto& [known, value] : colours) {
        if (name == QLatin1String(known)) {
            return value;
        }
    }
    return {};
}

void drawImage(QPainter& painter, const QString& name, const QRectF& place) {
    QSvgRenderer renderer;
    if (QFile::exists(pathOf(name)) && renderer.load(pathOf(name))) {
        renderer.render(&painter, place);
    }
}

QPixmap image(const QString& name, const QSize& size, qreal devicePixelRatio) {
    if (size.isEmpty() || !QFile::exists(pathOf(name))) {
        return {};
    }
    QPixmap pixels(QSizeF(QSizeF(size) * devicePixelRatio).toSize());
    pixels.fill(Qt::transparent);
    QPainter painter(&pixels);
    drawImage(painter, name, QRectF(QPointF(), QSizeF(pixels.size())));
    painter.end();
    pixels.setDevicePixelRatio(devicePixelRatio);
    return pixels;
}

QIcon icon(const QString& name) {
    if (!QFile::exists(pathOf(name))) {
        return {};
    }
    QIcon icon(pathOf(name));
    // What the style makes of a white image by itself hardly looks different.
    if (const QString off = pathOf(name + "_off"); QFile::exists(off)) {
        icon.addFile(off, QSize(), QIcon::Disabled);
    }
    return icon;
}

} // namespace deckmate
