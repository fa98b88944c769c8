#include "controls/GainTickTitle.h"

#include "controls/ViewDrawing.h"

#include <QAccessible>
#include <QAccessibleWidget>
#include <QFontMetricsF>
#include <QMouseEvent>
#include <QPainter>

namespace deckmate {

namespace {

/// For assistive programs a strip is one text: its labels are nothing but values of the slider.
QAccessibleInterface* makeAccessible(const QString& /*className*/, QObject* object) {
    auto* const strip = dynamic_cast<GainTickTitle*>(object);
    return strip == nullptr ? nullptr : new QAccessibleWidget(strip, QAccessible::StaticText);
}

} // namespace

GainTickTitle::GainTickTitle(QWidget* parent) : QWidget(parent) {
    static const bool isInstalled = [] {
        QAccessible::installFactory(makeAccessible);
        return true;
    }();
    static_cast<void>(isInstalled);
    initUI();
}

void GainTickTitle::initUI() {
    disableTextColor_ = QColor::fromRgbF(1.0F, 1.0F, 1.0F, 0.5F);
}

void GainTickTitle::initTick() {
    textRectList_.clear();
    for (const QString& text : texts_) {
        textRectList_.push_back({text, {}});
    }
    setAccessibleDescription(texts_.join(QStringLiteral(", ")));
    update();
}

void GainTickTitle::setEnable(bool enable) {
    enable_ = enable;
    update();
}

void GainTickTitle::drawRect(QPainter& painter) {
    painter.setPen(enable_ ? QColor(Qt::white) : disableTextColor_);
    painter.setFont(font());
    const QFontMetricsF metrics(font());
    std::vector<ViewSize> sizes;
    for (const TickTextInfo& label : textRectList_) {
        sizes.push_back({metrics.horizontalAdvance(label.text), metrics.height()});
    }
    const std::vector<ViewRect> frames =
        tickFrames({static_cast<double>(width()), static_cast<double>(height())}, sizes);
    for (std::size_t i = 0; i < frames.size(); ++i) {
        textRectList_[i].frame = frames[i];
        const QRectF place = fromView(frames[i], height());
        painter.drawText(place.topLeft() + QPointF(0, metrics.ascent()), textRectList_[i].text);
    }
}

void GainTickTitle::mouseUp(QPointF place) {
    if (delegate_ == nullptr) {
        return;
    }
    std::vector<ViewRect> frames;
    for (const TickTextInfo& label : textRectList_) {
        frames.push_back(label.frame);
    }
    if (const auto clicked = tickAt(frames, toView(place, height()))) {
        // A copy, because the delegate may change the texts.
        const QString text = textRectList_[*clicked].text;
        delegate_->GainTickTitle(*this, text);
    }
}

void GainTickTitle::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    drawRect(painter);
}

void GainTickTitle::mousePressEvent(QMouseEvent* event) {
    // Accepted, because the release comes only to who took the press.
    event->setAccepted(event->button() == Qt::LeftButton);
}

void GainTickTitle::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton) {
        mouseUp(event->position());
    }
}

} // namespace deckmate
