#include "controls/Control.h"

#include "controls/Resources.h"

#include <cmath>

#include <QAccessibleValueInterface>
#include <QAccessibleWidget>
#include <QApplication>
#include <QFocusEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QStyleHints>
#include <QWheelEvent>

namespace deckmate {

namespace {

constexpr int wheelNotch = 120;
constexpr double pageSteps = 10.0;

/// The focus goes, or comes back, because another window, a popup or the menu bar has the keyboard
/// for a while.
bool isInterlude(Qt::FocusReason reason) {
    return reason == Qt::ActiveWindowFocusReason || reason == Qt::PopupFocusReason ||
           reason == Qt::MenuBarFocusReason;
}

/// A ShownValue as assistive programs see it.
class AccessibleValue final : public QAccessibleWidget, public QAccessibleValueInterface {
public:
    AccessibleValue(QWidget& widget, ShownValue& value)
        : QAccessibleWidget(&widget, value.role()), value_(value) {}

    void* interface_cast(QAccessible::InterfaceType type) override {
        return type == QAccessible::ValueInterface ? static_cast<QAccessibleValueInterface*>(this)
                                                   : QAccessibleWidget::interface_cast(type);
    }
    QAccessible::State state() const override {
        QAccessible::State state = QAccessibleWidget::state();
        if (!value_.isOperable()) {
            state.disabled = role() == QAccessible::Slider;
            state.focusable = false;
            state.readOnly = true;
        }
        return state;
    }

    QVariant currentValue() const override { return value_.shownValue(); }
    void setCurrentValue(const QVariant& value) override {
        bool isNumber = false;
        const double number = value.toDouble(&isNumber);
        if (isNumber && value_.isOperable()) {
            value_.chooseValue(number, ControlEvent::Assistance);
        }
    }
    QVariant maximumValue() const override { return value_.highestValue(); }
    QVariant minimumValue() const override { return value_.lowestValue(); }
    QVariant minimumStepSize() const override { return value_.valueStep(); }

private:
    ShownValue& value_;
};

QAccessibleInterface* makeAccessible(const QString& /*className*/, QObject* object) {
    auto* const value = dynamic_cast<ShownValue*>(object);
    return value == nullptr ? nullptr : new AccessibleValue(*static_cast<QWidget*>(object), *value);
}

} // namespace

void announceShownValues() {
    static const bool isInstalled = [] {
        QAccessible::installFactory(makeAccessible);
        return true;
    }();
    static_cast<void>(isInstalled);
}

void announceValue(QWidget& control, double value) {
    if (QAccessible::isActive()) {
        QAccessibleValueChangeEvent event(&control, value);
        QAccessible::updateAccessibility(&event);
    }
}

Control::Control(QWidget* parent) : QWidget(parent) {
    announceShownValues();
    setFocusPolicy(Qt::TabFocus);
}

void Control::drawFocusRing(QPainter& painter, const QRectF& handle) const {
    if (!showsFocus_) {
        return;
    }
    constexpr double width = 3.0;
    painter.setPen(QPen(colour("Focus"), width));
    painter.setBrush(Qt::NoBrush);
    // Half of it on the handle: there is little room beside a knob at its track's end.
    painter.drawEllipse(handle);
}

void Control::press(const QMouseEvent& event) {
    const QStyleHints& hints = *QGuiApplication::styleHints();
    const QPointF place = event.globalPosition();
    clicks_.press(event.timestamp(), {place.x(), place.y()},
                  static_cast<std::uint64_t>(hints.mouseDoubleClickInterval()),
                  hints.mouseDoubleClickDistance());
    mouseDown(event.position());
}

void Control::mousePressEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton) {
        press(*event);
    } else {
        event->ignore();
    }
}

void Control::mouseDoubleClickEvent(QMouseEvent* event) {
    mousePressEvent(event);
}

void Control::mouseMoveEvent(QMouseEvent* event) {
    if ((event->buttons() & Qt::LeftButton) != 0) {
        mouseDragged(event->position());
    } else {
        event->ignore();
    }
}

void Control::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton) {
        mouseUp(event->position());
    } else {
        event->ignore();
    }
}

void Control::stepBy(double steps, ControlEvent event) {
    chooseValue(shownValue() + steps * valueStep(), event);
}

void Control::keyPressEvent(QKeyEvent* event) {
    constexpr auto meaningful =
        Qt::ShiftModifier | Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier;
    if (!isOperable() || (event->modifiers() & meaningful) != 0) {
        event->ignore();
        return;
    }
    switch (event->key()) {
    case Qt::Key_Up:
    case Qt::Key_Right:
        stepBy(1, ControlEvent::KeyDown);
        break;
    case Qt::Key_Down:
    case Qt::Key_Left:
        stepBy(-1, ControlEvent::KeyDown);
        break;
    case Qt::Key_PageUp:
        stepBy(pageSteps, ControlEvent::KeyDown);
        break;
    case Qt::Key_PageDown:
        stepBy(-pageSteps, ControlEvent::KeyDown);
        break;
    case Qt::Key_Home:
        chooseValue(lowestValue(), ControlEvent::KeyDown);
        break;
    case Qt::Key_End:
        chooseValue(highestValue(), ControlEvent::KeyDown);
        break;
    default:
        event->ignore();
        break;
    }
}

void Control::wheelEvent(QWheelEvent* event) {
    if (!isOperable()) {
        event->ignore();
        return;
    }
    const QPoint turned = event->angleDelta();
    // Qt counts a turn to the left as positive; to the right is more here, as with the arrow keys.
    wheelAngle_ += std::abs(turned.y()) >= std::abs(turned.x()) ? turned.y() : -turned.x();
    const int notches = wheelAngle_ / wheelNotch;
    wheelAngle_ %= wheelNotch;
    if (notches != 0) {
        stepBy(notches, ControlEvent::ScrollWheel);
    }
}

void Control::focusInEvent(QFocusEvent* event) {
    const Qt::FocusReason reason = event->reason();
    if (!isInterlude(reason)) {
        // Any reason but the mouse: what the program moves the focus for, a disabled neighbour or
        // an assistive program, leaves the user with nothing but the ring to find it by.
        showsFocus_ = reason != Qt::MouseFocusReason;
    }
    QWidget::focusInEvent(event);
    update();
}

void Control::focusOutEvent(QFocusEvent* event) {
    if (!isInterlude(event->reason())) {
        showsFocus_ = false;
    }
    QWidget::focusOutEvent(event);
    update();
}

} // namespace deckmate
