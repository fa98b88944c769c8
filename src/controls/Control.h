// What the drawn controls have in common beside the mouse: keyboard, wheel, focus, assistance.
#pragma once

#include "controls/ClickCounter.h"
#include "controls/ViewGeometry.h"

#include <QAccessible>
#include <QWidget>

namespace deckmate {

/// What the user did that a control is reporting.
enum class ControlEvent {
    None, ///< nothing is being reported
    LeftMouseDown,
    LeftMouseDragged,
    LeftMouseUp,
    KeyDown,
    ScrollWheel,
    Assistance, ///< another program did it, over the accessibility bus
};

/// A value between two ends, as assistive programs see it.
class ShownValue {
public:
    virtual ~ShownValue() = default;

    virtual QAccessible::Role role() const = 0;
    virtual double shownValue() const = 0;
    virtual double lowestValue() const = 0;
    virtual double highestValue() const = 0;
    virtual double valueStep() const = 0;
    /// NO if the user can only look at it, now or ever.
    virtual bool isOperable() const = 0;
    /// The user has chosen a value by other means than the mouse; may lie beyond the ends, and is
    /// ignored if it is no number.
    virtual void chooseValue(double value, ControlEvent event) = 0;

protected:
    ShownValue() = default;
    ShownValue(const ShownValue&) = default;
    ShownValue& operator=(const ShownValue&) = default;
    ShownValue(ShownValue&&) = default;
    ShownValue& operator=(ShownValue&&) = default;
};

/// Lets assistive programs find every ShownValue among the widgets. Called by each one's
/// constructor; does something the first time.
void announceShownValues();

/// Tells assistive programs that the widget's value has changed, if any are there.
void announceValue(QWidget& control, double value);

/// A control that is operated by the mouse, the keyboard (arrows: one step, page keys: ten, Home
/// and End) and the wheel (one step a notch). Takes the focus by the Tab key only, and shows then
/// that it has it. Thread: main.
class Control : public QWidget, public ShownValue {
public:
    explicit Control(QWidget* parent);

    /// The left button alone; points with the y axis as the control has it.
    virtual void mouseDown(QPointF place) = 0;
    virtual void mouseDragged(QPointF place) = 0;
    virtual void mouseUp(QPointF place) = 0;

    /// Of the newest press and of its release: 2 for a double click.
    int clickCount() const { return clicks_.count(); }
    bool showsFocus() const { return showsFocus_; }

protected:
    /// Around the circle that is the control's handle, if it has the focus from the keyboard.
    void drawFocusRing(QPainter& painter, const QRectF& handle) const;

    void mousePressEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

private:
    void press(const QMouseEvent& event);
    void stepBy(double steps, ControlEvent event);

    ClickCounter clicks_;
    int wheelAngle_ = 0; ///< turned, but not yet a notch
    bool showsFocus_ = false;
};

} // namespace deckmate
