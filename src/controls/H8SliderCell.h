// How a slider looks: a thin track, white up to the value, and a round knob.
#pragma once

#include <QRectF>

class QPainter;

namespace deckmate {

class Slider;

/// Draws in grey alone unless it is enabled, whatever the slider is. Thread: main.
class H8SliderCell {
public:
    bool sliderEnabled() const { return sliderEnabled_; }
    void setSliderEnabled(bool enabled);
    bool isVertical() const { return isVertical_; }
    void setIsVertical(bool isVertical);
    /// The slider that has this cell, or null; set by the slider.
    Slider* controlView() const { return controlView_; }
    void setControlView(Slider* slider) { controlView_ = slider; }

    /// The track and its part up to the value; `bar` with y downward, as `flipped` says.
    void drawBarInside(QPainter& painter, const QRectF& bar, bool flipped) const;
    void drawHorizontal(QPainter& painter, const QRectF& bar) const;
    void drawVertical(QPainter& painter, const QRectF& bar) const;
    void drawKnob(QPainter& painter, const QRectF& knob) const;

private:
    void redraw() const;

    Slider* controlView_ = nullptr;
    bool sliderEnabled_ = false;
    bool isVertical_ = false;
};

} // namespace deckmate
