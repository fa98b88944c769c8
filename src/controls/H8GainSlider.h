// A slider that a double click sets to one value.
#pragma once

#include "controls/Slider.h"

namespace deckmate {

class H8GainSlider;

/// Who hears of the double click.
class H8GainSliderParent {
public:
    virtual ~H8GainSliderParent() = default;

    virtual void sliderGainValueChanged(H8GainSlider& slider) = 0;

protected:
    H8GainSliderParent() = default;
    H8GainSliderParent(const H8GainSliderParent&) = default;
    H8GainSliderParent& operator=(const H8GainSliderParent&) = default;
    H8GainSliderParent(H8GainSliderParent&&) = default;
    H8GainSliderParent& operator=(H8GainSliderParent&&) = default;
};

/// A double click sets the value and tells the parent; it doesn't call the action. Its first click
/// is an ordinary one. Thread: main.
class H8GainSlider final : public Slider {
public:
    using Slider::Slider;

    double valueForDoubleClick() const { return valueForDoubleClick_; }
    void setValueForDoubleClick(double value) { valueForDoubleClick_ = value; }
    /// Not owned; null for none.
    H8GainSliderParent* parent() const { return parent_; }
    void setParent(H8GainSliderParent* parent) { parent_ = parent; }

    void mouseDown(QPointF place) override;

private:
    double valueForDoubleClick_ = 0.0;
    H8GainSliderParent* parent_ = nullptr;
};

} // namespace deckmate
