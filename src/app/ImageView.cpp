#include "app/ImageView.h"

#include "controls/Resources.h"

#include <QPixmap>

namespace deckmate {

ImageView::ImageView(const QString& name, const QSize& size, const QString& description,
                     QWidget* parent)
    : QLabel(parent), name_(name) {
    setFixedSize(size);
    setAccessibleName(description);
    setPixmap(image(name_, size, devicePixelRatioF()));
}

void ImageView::paintEvent(QPaintEvent* event) {
    // Only now is it certain on which screen it stands.
    if (pixmap(Qt::ReturnByValue).devicePixelRatio() != devicePixelRatioF()) {
        setPixmap(image(name_, size(), devicePixelRatioF()));
    }
    QLabel::paintEvent(event);
}

} // namespace deckmate
