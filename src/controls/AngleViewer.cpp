#include "controls/AngleViewer.h"

#include "controls/ViewDrawing.h"

#include <algorithm>
#include <cmath>

#include <QFontMetricsF>
#include <QPainter>

namespace deckmate {

namespace {

constexpr double lineWidth = 4.0;

QPen penOf(const QColor& color) {
    return {color, lineWidth, Qt::SolidLine, Qt::RoundCap};
}

} // namespace

AngleViewer::AngleViewer(QWidget* parent) : Control(parent) {
    initUI();
}

const QColor& AngleViewer::GrayBackgroundColor() {
    static const QColor color(88, 88, 88);
    return color;
}

void AngleViewer::initUI() {
    angle_ = 0;
    grayCircleColor_ = GrayBackgroundColor();
    disableColor_ = GrayBackgroundColor();
    disableTextColor_ = QColor::fromRgbF(1.0F, 1.0F, 1.0F, 0.5F);
    allow2Drag_ = false;
    const auto degrees = [](int angle) { return QString::number(angle) + QChar(0x00B0); };
    angleTextList_ = {{
        {QStringLiteral("MONO"), 0, {25, -20}, {}},
        {degrees(30), 30, {-3, -14}, {}},
        {degrees(60), 60, {-5, -5}, {}},
        {degrees(90), 90, {-5, 0}, {}},
        {degrees(120), 120, {-5, 10}, {}},
        {degrees(150), 150, {5, 18}, {}},
    }};
    setEnable(false);
}

void AngleViewer::setEnable(bool enable) {
    const bool isChanged = enable != enable_;
    enable_ = enable;
    setFocusPolicy(enable ? Qt::TabFocus : Qt::NoFocus);
    if (!enable && window()->focusWidget() == this) {
        focusNextChild();
        clearFocus();
    }
    if (isChanged) {
        QAccessible::State changed;
        changed.disabled = true;
        changed.focusable = true;
        QAccessibleStateChangeEvent event(this, changed);
        QAccessible::updateAccessibility(&event);
    }
}

QPainterPath AngleViewer::arc(double degrees) const {
    const double radius = geometry_.RADIUS_OF_BIG_CURVE();
    const QPointF centre = fromView(geometry_.centre(), geometry_.cacheSize.height);
    const QRectF circle(centre - QPointF(radius, radius), QSizeF(2 * radius, 2 * radius));
    QPainterPath path;
    path.arcMoveTo(circle, AngleGeometry::directionOf0);
    path.arcTo(circle, AngleGeometry::directionOf0, degrees);
    return path;
}

void AngleViewer::layout() {
    const ViewSize now = {static_cast<double>(width()), static_cast<double>(height())};
    if (now == geometry_.cacheSize) {
        return;
    }
    geometry_.cacheSize = now;
    benBG_ = arc(AngleGeometry::highest);
    ben150_ = benBG_;
    ben0_ = arc(0);
    benThumb_ = QPainterPath();
    benThumb_.addEllipse(0, 0, geometry_.THUMB_SIZE(), geometry_.THUMB_SIZE());
    thumbPosition_ = geometry_.point0Deg();
    benMove_ = ben0_;
}

void AngleViewer::rebuildArc() {
    benMove_ = arc(angle_);
    update();
}

void AngleViewer::updateAngle(double angle) {
    if (angle == angle_) {
        return;
    }
    if (delegate_ != nullptr) {
        delegate_->angleViewer(*this, angle);
    }
    angle_ = angle;
    announceValue(*this, angle_);
}

void AngleViewer::setNewAngle(double angle) {
    updateAngle(angle);
    thumbPosition_ = geometry_.pointAt(angle);
    rebuildArc();
}

void AngleViewer::showEnd(double angle, const QPainterPath& path, ViewPoint thumb) {
    updateAngle(angle);
    benMove_ = path;
    thumbPosition_ = thumb;
    update();
}

void AngleViewer::resetTo0() {
    showEnd(AngleGeometry::lowest, ben0_, geometry_.point0Deg());
}

void AngleViewer::moveTheThumb(ViewPoint point, bool preventOutSide) {
    const double angle = geometry_.angleOf(point);
    if (angle >= AngleGeometry::lowest && angle <= AngleGeometry::highest) {
        updateAngle(angle);
        thumbPosition_ = geometry_.pointToward(point);
        rebuildArc();
    } else if (preventOutSide) {
        return;
    } else if (angle > AngleGeometry::highest) {
        showEnd(AngleGeometry::highest, ben150_, geometry_.point150Deg());
    } else {
        resetTo0();
    }
}

void AngleViewer::detectClick(ViewPoint point) {
    const ViewRect bounds = {0, 0, static_cast<double>(width()), static_cast<double>(height())};
    // As Qt counts them, because the topmost row of points is on the upper edge here.
    if (bounds.contains({point.x, bounds.height - point.y}) && point.x <= bounds.width * 0.5) {
        moveTheThumb(point, true);
    }
}

void AngleViewer::detectClickTitle(ViewPoint point) {
    for (const AngleInfo& label : angleTextList_) {
        if (angleLabelHitRect(label.frame).contains(point)) {
            didTouchAngleTitle_ = true;
            setNewAngle(label.angle);
            return;
        }
    }
}

void AngleViewer::mouseDown(QPointF place) {
    userDidDrag_ = false;
    allow2Drag_ = false;
    didTouchAngleTitle_ = false;
    if (!enable_) {
        return;
    }
    const ViewPoint point = toView(place, height());
    if (geometry_.thumbRect(thumbPosition_).contains(point)) {
        allow2Drag_ = true;
    } else {
        detectClickTitle(point);
    }
}

void AngleViewer::mouseDragged(QPointF place) {
    if (allow2Drag_) {
        userDidDrag_ = true;
        moveTheThumb(toView(place, height()), false);
    }
}

void AngleViewer::mouseUp(QPointF place) {
    if (enable_ && !didTouchAngleTitle_ && !userDidDrag_ && clickCount() == 1) {
        detectClick(toView(place, height()));
    }
    userDidDrag_ = false;
    allow2Drag_ = false;
}

void AngleViewer::chooseValue(double value, ControlEvent /*event*/) {
    if (!std::isnan(value)) {
        setNewAngle(std::clamp(value, AngleGeometry::lowest, AngleGeometry::highest));
    }
}

void AngleViewer::drawText(QPainter& painter) {
    painter.setPen(enable_ ? QColor(Qt::white) : disableTextColor_);
    painter.setFont(font());
    const QFontMetricsF metrics(font());
    for (AngleInfo& label : angleTextList_) {
        label.frame = angleLabelFrame(geometry_, label.angle, label.offset,
                                      {metrics.horizontalAdvance(label.text), metrics.height()});
        const QRectF place = fromView(label.frame, geometry_.cacheSize.height);
        painter.drawText(place.topLeft() + QPointF(0, metrics.ascent()), label.text);
    }
}

void AngleViewer::drawRect(QPainter& painter) {
    const QColor active = enable_ ? QColor(Qt::white) : disableColor_;
    painter.strokePath(benBG_, penOf(grayCircleColor_));
    painter.strokePath(benMove_, penOf(active));
    const QPointF half(geometry_.THUMB_SIZE() / 2, geometry_.THUMB_SIZE() / 2);
    const QPointF corner = fromView(thumbPosition_, geometry_.cacheSize.height) - half;
    painter.fillPath(benThumb_.translated(corner), active);
    drawFocusRing(painter, QRectF(corner, QSizeF(geometry_.THUMB_SIZE(), geometry_.THUMB_SIZE())));
    drawText(painter);
}

void AngleViewer::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    drawRect(painter);
}

void AngleViewer::resizeEvent(QResizeEvent* /*event*/) {
    layout();
}

} // namespace deckmate
