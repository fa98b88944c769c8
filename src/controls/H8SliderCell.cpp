#include "controls/H8SliderCell.h"

#include "controls/AngleViewer.h"
#include "controls/Slider.h"
#include "controls/SliderGeometry.h"
#include "controls/ViewDrawing.h"

#include <QPainter>

namespace deckmate {

namespace {

constexpr double cornerRadius = 2.0;
constexpr double thickness = 4.0;

void fillRounded(QPainter& painter, const ViewRect& rect, const QColor& color) {
    painter.setPen(Qt::NoPen);
    painter.setBrush(color);
    painter.drawRoundedRect(fromFlippedView(rect), cornerRadius, cornerRadius);
}

QColor activeColor(bool isEnabled) {
    return isEnabled ? QColor(Qt::white) : AngleViewer::GrayBackgroundColor();
}

} // namespace

void H8SliderCell::redraw() const {
    if (controlView_ != nullptr) {
        controlView_->update();
    }
}

void H8SliderCell::setSliderEnabled(bool enabled) {
    sliderEnabled_ = enabled;
    redraw();
}

void H8SliderCell::setIsVertical(bool isVertical) {
    isVertical_ = isVertical;
    redraw();
}

void H8SliderCell::drawBarInside(QPainter& painter, const QRectF& bar, bool /*flipped*/) const {
    if (controlView_ == nullptr) {
        return;
    }
    if (isVertical_) {
        drawVertical(painter, bar);
    } else {
        drawHorizontal(painter, bar);
    }
}

void H8SliderCell::drawHorizontal(QPainter& painter, const QRectF& bar) const {
    fillRounded(painter, {bar.x(), bar.y(), bar.width(), thickness},
                AngleViewer::GrayBackgroundColor());
    fillRounded(painter,
                horizontalFill(toFlippedView(bar), controlView_->fraction(), controlView_->width()),
                activeColor(sliderEnabled_));
}

void H8SliderCell::drawVertical(QPainter& painter, const QRectF& bar) const {
    fillRounded(painter, {bar.x(), bar.y(), thickness, bar.height()},
                AngleViewer::GrayBackgroundColor());
    fillRounded(painter,
                verticalFill(toFlippedView(bar), controlView_->fraction(), controlView_->height()),
                activeColor(sliderEnabled_));
}

void H8SliderCell::drawKnob(QPainter& painter, const QRectF& knob) const {
    const ViewRect circle = knobCircle(toFlippedView(knob));
    painter.setPen(Qt::NoPen);
    painter.setBrush(activeColor(sliderEnabled_));
    painter.drawEllipse(fromFlippedView(circle));
}

} // namespace deckmate
