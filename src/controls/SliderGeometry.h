// Where a slider's track, fill and knob lie, and which value a point means.
#pragma once

#include "controls/ViewGeometry.h"

namespace deckmate {

/// Of a slider of this size; rectangles with y pointing down, as sliders are drawn. A vertical one
/// has its minimum at the bottom.
struct SliderGeometry {
    ViewSize size;
    bool isVertical = false;

    /// As long as the slider but for 4 points at each end, 4 points thick.
    ViewRect barRect() const;
    /// At a fraction of the way from the minimum to the maximum.
    ViewRect knobRect(double fraction) const;
    /// The fraction whose knob has its painted middle at the point; beyond 0 and 1 outside of the
    /// track's ends. 0 in a slider too short for any way.
    double fractionAt(ViewPoint point) const;
};

/// 0 at the minimum, 1 at the maximum; 0 if there is no way between them.
double sliderFraction(double value, double minimum, double maximum);

/// The part of the track up to the value, `length` being the slider's along the track.
ViewRect horizontalFill(const ViewRect& bar, double fraction, double length);
ViewRect verticalFill(const ViewRect& bar, double fraction, double length);

/// The circle that is painted for a knob, as the square around it.
ViewRect knobCircle(const ViewRect& knob);

} // namespace deckmate
