#include "controls/Resources.h"

#include <array>
#include <utility>

#include <QFile>
#include <QIconEngine>
#include <QPainter>
#include <QRectF>
#include <QSvgRenderer>

namespace deckmate {

namespace {

QString pathOf(const QString& name) {
    return QStringLiteral(":/images/") + name + QStringLiteral(".svg");
}

/// An image that fades where it can't act: what the style makes of a white one by itself hardly
/// looks different.
class FadingIcon final : public QIconEngine {
public:
    explicit FadingIcon(const QString& path) : image_(path) {}

    QIconEngine* clone() const override { return new FadingIcon(*this); }
    QSize actualSize(const QSize& size, QIcon::Mode /*mode*/, QIcon::State /*state*/) override {
        return image_.actualSize(size);
    }
    /// `size` in pixels.
    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State /*state*/) override {
        QPixmap whole = image_.pixmap(size, 1.0);
        if (mode != QIcon::Disabled) {
            return whole;
        }
        QPixmap faded(whole.size());
        faded.fill(Qt::transparent);
        QPainter painter(&faded);
        painter.setOpacity(disabledOpacity);
        painter.drawPixmap(0, 0, whole);
        return faded;
    }
    void paint(QPainter* painter, const QRect& place, QIcon::Mode mode,
               QIcon::State state) override {
        const QSizeF pixels = QSizeF(place.size()) * painter->device()->devicePixelRatioF();
        painter->drawPixmap(place, pixmap(pixels.toSize(), mode, state));
    }

private:
    QIcon image_;
};

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
    return QFile::exists(pathOf(name)) ? QIcon(new FadingIcon(pathOf(name))) : QIcon();
}

} // namespace deckmate
