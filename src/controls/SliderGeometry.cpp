#include "controls/SliderGeometry.h"

#include <algorithm>
#include <cmath>

namespace deckmate {

namespace {

constexpr double barThickness = 4.0;
constexpr double barInset = 4.0;
constexpr double knobSize = 21.0;
constexpr double knobShare = 0.85;
constexpr double knobLift = 2.0;
/// From the slider's end to the middle of the painted knob: it just stays inside.
constexpr double travelInset = 10.0;

/// A slider's place across its track: on whole points.
double trackMiddle(double across) {
    return std::floor(across / 2);
}

} // namespace

ViewRect SliderGeometry::barRect() const {
    if (isVertical) {
        return {trackMiddle(size.width) - barThickness / 2, barInset, barThickness,
                std::max(0.0, size.height - 2 * barInset)};
    }
    return {barInset, trackMiddle(size.height) - barThickness / 2,
            std::max(0.0, size.width - 2 * barInset), barThickness};
}

ViewRect SliderGeometry::knobRect(double fraction) const {
    const double length = isVertical ? size.height : size.width;
    const double way = std::max(0.0, length - 2 * travelInset);
    const ViewPoint middle =
        isVertical ? ViewPoint{trackMiddle(size.width), travelInset + (1 - fraction) * way}
                   : ViewPoint{travelInset + fraction * way, trackMiddle(size.height)};
    return {middle.x - knobSize / 2, middle.y + knobLift - knobSize / 2, knobSize, knobSize};
}

double SliderGeometry::fractionAt(ViewPoint point) const {
    const double length = isVertical ? size.height : size.width;
    const double way = length - 2 * travelInset;
    if (way <= 0) {
        return 0;
    }
    const double along = isVertical ? size.height - point.y : point.x;
    return (along - travelInset) / way;
}

double sliderFraction(double value, double minimum, double maximum) {
    return maximum > minimum ? (value - minimum) / (maximum - minimum) : 0;
}

ViewRect horizontalFill(const ViewRect& bar, double fraction, double length) {
    return {bar.x, bar.y, fraction * (length - 8), barThickness};
}

ViewRect verticalFill(const ViewRect& bar, double fraction, double length) {
    const double filled = fraction * (length - 8);
    return {bar.x, bar.y + bar.height - filled, barThickness, filled};
}

ViewRect knobCircle(const ViewRect& knob) {
    const double side = std::trunc(std::min(knob.width, knob.height));
    const double diameter = std::trunc(side * knobShare);
    const ViewPoint middle = knob.centre();
    return {middle.x - diameter / 2, middle.y - diameter / 2 - knobLift, diameter, diameter};
}

} // namespace deckmate
