#include "controls/Slider.h"

#include "controls/H8SliderCell.h"
#include "controls/ViewDrawing.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include <QEvent>
#include <QPainter>

namespace deckmate {

namespace {

constexpr int thickness = 24;
constexpr int usualLength = 128;
constexpr double steps = 100.0;

} // namespace

Slider::Slider(QWidget* parent) : Control(parent) {
    setCell(std::make_shared<H8SliderCell>());
}

Slider::~Slider() {
    cell_->setControlView(nullptr);
}

void Slider::setCell(std::shared_ptr<H8SliderCell> cell) {
    if (cell_) {
        cell_->setControlView(nullptr);
    }
    cell_ = std::move(cell);
    cell_->setControlView(this);
    update();
}

void Slider::setDoubleValue(double value) {
    if (std::isnan(value)) {
        return;
    }
    const double kept = std::max(minimum_, std::min(value, maximum_));
    if (kept != value_) {
        value_ = kept;
        announceValue(*this, value_);
        update();
    }
}

std::int64_t Slider::integerValue() const {
    constexpr double beyond = 0x1p63;
    if (value_ >= beyond) {
        return INT64_MAX;
    }
    return value_ < -beyond ? INT64_MIN : static_cast<std::int64_t>(value_);
}

void Slider::setMinValue(double value) {
    if (std::isfinite(value)) {
        minimum_ = value;
        setDoubleValue(value_);
        update();
    }
}

void Slider::setMaxValue(double value) {
    if (std::isfinite(value)) {
        maximum_ = value;
        setDoubleValue(value_);
        update();
    }
}

void Slider::setVertical(bool isVertical) {
    isVertical_ = isVertical;
    updateGeometry();
    update();
}

double Slider::valueStep() const {
    return step_ > 0 ? step_ : (maximum_ - minimum_) / steps;
}

SliderGeometry Slider::geometry() const {
    return {{static_cast<double>(width()), static_cast<double>(height())}, isVertical_};
}

void Slider::sendAction(ControlEvent event) {
    if (action_) {
        const auto before = std::exchange(currentEvent_, event);
        action_(*this);
        currentEvent_ = before;
    }
}

void Slider::follow(QPointF place) {
    const double wanted = geometry().fractionAt({place.x(), place.y()}) + held_;
    setDoubleValue(minimum_ + std::clamp(wanted, 0.0, 1.0) * (maximum_ - minimum_));
}

void Slider::mouseDown(QPointF place) {
    isTracking_ = true;
    const ViewPoint point = {place.x(), place.y()};
    const bool isOnKnob = geometry().knobRect(fraction()).contains(point);
    held_ = isOnKnob ? fraction() - geometry().fractionAt(point) : 0;
    if (!isOnKnob) {
        follow(place);
    }
    if (isContinuous_) {
        sendAction(ControlEvent::LeftMouseDown);
    }
}

void Slider::mouseDragged(QPointF place) {
    if (!isTracking_) {
        return;
    }
    const double before = value_;
    follow(place);
    if (isContinuous_ && value_ != before) {
        sendAction(ControlEvent::LeftMouseDragged);
    }
}

void Slider::mouseUp(QPointF place) {
    if (!isTracking_) {
        return;
    }
    follow(place);
    isTracking_ = false;
    sendAction(ControlEvent::LeftMouseUp);
}

void Slider::chooseValue(double value, ControlEvent event) {
    const double before = value_;
    setDoubleValue(value);
    if (value_ != before) {
        sendAction(event);
    }
}

void Slider::drawRect(QPainter& painter) {
    const SliderGeometry places = geometry();
    const ViewRect knob = places.knobRect(fraction());
    cell_->drawBarInside(painter, fromFlippedView(places.barRect()), true);
    cell_->drawKnob(painter, fromFlippedView(knob));
    drawFocusRing(painter, fromFlippedView(knobCircle(knob)));
}

QSize Slider::sizeHint() const {
    return isVertical_ ? QSize(thickness, usualLength) : QSize(usualLength, thickness);
}

QSize Slider::minimumSizeHint() const {
    return {thickness, thickness};
}

void Slider::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    drawRect(painter);
}

void Slider::changeEvent(QEvent* event) {
    Control::changeEvent(event);
    if (event->type() == QEvent::EnabledChange) {
        // A disabled control doesn't hear of the release.
        if (!isEnabled()) {
            trackingEnded();
        }
        update();
    }
}

void Slider::hideEvent(QHideEvent* event) {
    Control::hideEvent(event);
    trackingEnded();
}

bool Slider::event(QEvent* event) {
    if (event->type() == QEvent::WindowBlocked) {
        trackingEnded();
    }
    return Control::event(event);
}

} // namespace deckmate
