#include "app/PathViewer.h"

#include <algorithm>

#include <QPainter>

namespace deckmate {

PathViewer::PathViewer(QWidget* parent) : QWidget(parent) {
    initUI();
}

PathViewer::PathViewer(const QRect& frame, QWidget* parent) : QWidget(parent) {
    setGeometry(frame);
    initUI();
}

void PathViewer::initUI() {
    setText(QString());
}

void PathViewer::setText(const QString& text) {
    text_ = text;
    setAccessibleName(lastPathComponent(text));
    update();
}

void PathViewer::drawRect(QPainter& painter) {
    const QString name = lastPathComponent(text_);
    const QFontMetricsF metrics(painter.font());
    const qreal x = std::min<qreal>(width() - metrics.horizontalAdvance(name), 0);
    const qreal y = (height() - metrics.height()) / 2;
    painter.setPen(Qt::black);
    painter.drawText(QPointF(x, y + metrics.ascent()), name);
}

void PathViewer::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    drawRect(painter);
}

QString lastPathComponent(const QString& path) {
    qsizetype end = path.size();
    while (end > 1 && path[end - 1] == '/') {
        --end;
    }
    const QString trimmed = path.left(end);
    return trimmed == "/" ? trimmed : trimmed.mid(trimmed.lastIndexOf('/') + 1);
}

} // namespace deckmate
