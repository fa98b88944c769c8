// A slider with a value of full precision, drawn by its cell.
#pragma once

#include "controls/Control.h"
#include "controls/SliderGeometry.h"

#include <cstdint>
#include <functional>
#include <memory>

namespace deckmate {

class H8SliderCell;

/// A press on the knob takes hold of it where it is; elsewhere it brings the knob there first. The
/// value then follows the pointer until the release. Thread: main.
class Slider : public Control {
public:
    /// Horizontal, from 0.0 to 1.0, with a plain H8SliderCell.
    explicit Slider(QWidget* parent = nullptr);
    ~Slider() override;
    Slider(const Slider&) = delete;
    Slider& operator=(const Slider&) = delete;
    Slider(Slider&&) = delete;
    Slider& operator=(Slider&&) = delete;

    double doubleValue() const { return value_; }
    /// Within the range; what is no number is ignored. Doesn't call the action.
    void setDoubleValue(double value);
    /// The value cut toward zero.
    std::int64_t integerValue() const;
    void setIntegerValue(std::int64_t value) { setDoubleValue(static_cast<double>(value)); }
    double minValue() const { return minimum_; }
    double maxValue() const { return maximum_; }
    /// The value stays within the range; a bound that is not finite is ignored.
    void setMinValue(double value);
    void setMaxValue(double value);
    bool isVertical() const { return isVertical_; }
    void setVertical(bool isVertical);
    /// Whether the action is called at the press and during a drag, not only at the release.
    bool isContinuous() const { return isContinuous_; }
    void setContinuous(bool isContinuous) { isContinuous_ = isContinuous; }
    /// What an arrow key or a notch of the wheel changes; a hundredth of the range until it is set.
    void setStep(double step) { step_ = step; }

    const std::shared_ptr<H8SliderCell>& cell() const { return cell_; }
    /// Not null. Installed in one slider at a time.
    void setCell(std::shared_ptr<H8SliderCell> cell);
    /// Called when the user has changed the value, also at each press and each release.
    void setAction(std::function<void(Slider&)> action) { action_ = std::move(action); }
    /// What the action is being called for.
    ControlEvent currentEvent() const { return currentEvent_; }

    /// 0 at the minimum, 1 at the maximum.
    double fraction() const { return sliderFraction(value_, minimum_, maximum_); }
    SliderGeometry geometry() const;
    bool isTracking() const { return isTracking_; }

    void mouseDown(QPointF place) override;
    void mouseDragged(QPointF place) override;
    void mouseUp(QPointF place) override;
    void drawRect(QPainter& painter);
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

    QAccessible::Role role() const override { return QAccessible::Slider; }
    double shownValue() const override { return value_; }
    double lowestValue() const override { return minimum_; }
    double highestValue() const override { return maximum_; }
    double valueStep() const override;
    bool isOperable() const override { return isEnabled(); }
    void chooseValue(double value, ControlEvent event) override;

protected:
    /// A press will have no release: the slider was disabled, hidden or blocked by a dialog. Called
    /// without a press as well.
    virtual void trackingEnded() { isTracking_ = false; }

    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void changeEvent(QEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    void follow(QPointF place);
    void sendAction(ControlEvent event);

    std::shared_ptr<H8SliderCell> cell_;
    std::function<void(Slider&)> action_;
    double value_ = 0.0;
    double minimum_ = 0.0;
    double maximum_ = 1.0;
    double step_ = 0.0; ///< 0 for a hundredth of the range
    double held_ = 0.0; ///< the fraction from the pointer to the knob that is being dragged
    bool isVertical_ = false;
    bool isContinuous_ = true;
    bool isTracking_ = false;
    ControlEvent currentEvent_ = ControlEvent::None;
};

} // namespace deckmate
