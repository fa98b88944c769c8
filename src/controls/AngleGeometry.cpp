#include "controls/AngleGeometry.h"

#include <cmath>
#include <numbers>

namespace deckmate {

namespace {

constexpr double cosineOf150 = -0.49999999999999983;
constexpr double sineOf150 = -0.8660254037844387;
constexpr double labelGap = 8.0;
constexpr double hitMargin = 10.0;

} // namespace

ViewPoint AngleGeometry::point0Deg() const {
    return {centre().x, centre().y + RADIUS_OF_BIG_CURVE()};
}

ViewPoint AngleGeometry::point150Deg() const {
    return {centre().x + cosineOf150 * RADIUS_OF_BIG_CURVE(),
            centre().y + sineOf150 * RADIUS_OF_BIG_CURVE()};
}

ViewPoint AngleGeometry::pointAt(double angle) const {
    const double direction = (angle + directionOf0) / degreesPerRadian;
    return {centre().x + RADIUS_OF_BIG_CURVE() * std::cos(direction),
            centre().y + RADIUS_OF_BIG_CURVE() * std::sin(direction)};
}

ViewPoint AngleGeometry::pointToward(ViewPoint point) const {
    const double direction = std::atan2(point.y - centre().y, point.x - centre().x);
    return {centre().x + RADIUS_OF_BIG_CURVE() * std::cos(direction),
            centre().y + RADIUS_OF_BIG_CURVE() * std::sin(direction)};
}

double AngleGeometry::angleOf(ViewPoint point) const {
    double degrees = std::atan2(point.y - centre().y, point.x - centre().x) * degreesPerRadian;
    if (degrees < 0) {
        degrees += 360;
    }
    return degrees - directionOf0;
}

ViewRect AngleGeometry::thumbRect(ViewPoint thumb) const {
    return {thumb.x - THUMB_SIZE() / 2, thumb.y - THUMB_SIZE() / 2, THUMB_SIZE(), THUMB_SIZE()};
}

ViewRect angleLabelFrame(const AngleGeometry& dial, double angle, ViewPoint offset, ViewSize text) {
    const double direction = (angle + AngleGeometry::directionOf0) * std::numbers::pi / 180;
    const double arcX = dial.centre().x + dial.RADIUS_OF_BIG_CURVE() * std::cos(direction);
    const double arcDown = dial.centre().y - dial.RADIUS_OF_BIG_CURVE() * std::sin(direction);
    const double top = arcDown - 0.5 * text.height + offset.y;
    return {arcX - text.width - labelGap + offset.x, dial.cacheSize.height - text.height - top,
            text.width, text.height};
}

ViewRect angleLabelHitRect(const ViewRect& frame) {
    return {frame.x - hitMargin, frame.y - hitMargin, frame.width + hitMargin,
            frame.height + hitMargin};
}

} // namespace deckmate
