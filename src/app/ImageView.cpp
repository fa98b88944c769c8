#include "app/ImageView.h"

#include "controls/Resources.h"

#include <utility>

#include <QPainter>
#include <QPixmap>

namespace deckmate {

ImageView::ImageView(QString name, const QSize& size, const QString& description, QWidget* parent)
    : QLabel(parent), name_(std::move(name)) {
    setFixedSize(size);
    setAccessibleName(description);
    setPixmap(image(name_, size, devicePixelRatioF()));
}

void ImageView::paintEvent(QPaintEvent* /*event*/) {
    // Only now is it certain on which screen it stands.
    if (pixmap(Qt::ReturnByValue).devicePixelRatio() != devicePixelRatioF()) {
        setPixmap(image(name_, size(), devicePixelRatioF()));
    }
    QPainter painter(this);
    painter.setOpacity(isEnabled() ? 1 : disabledOpacity);
    painter.drawPixmap(QPoint(), pixmap(Qt::ReturnByValue));
}

} // namespace deckmate
