// Where the angle dial's arc, thumb and labels lie, and which angle a point means.
#pragma once

#include "controls/ViewGeometry.h"

namespace deckmate {

/// Of a dial of this size. Dial angles in degrees: 0 straight above the centre, growing
/// counter-clockwise, 150 at the end of the arc on the lower left.
struct AngleGeometry {
    /// (180 / pi) as the dial has always had it.
    static constexpr double degreesPerRadian = 57.29577951308232;
    /// Of dial angle 0, counter-clockwise from the right, in degrees.
    static constexpr double directionOf0 = 90.0;
    static constexpr double lowest = 0.0;
    static constexpr double highest = 150.0;

    /// Of the view when this was last built.
    ViewSize cacheSize;

    ViewPoint centre() const { return {cacheSize.width * 0.5, cacheSize.height * 0.5}; }
    /// Of the arc.
    double RADIUS_OF_BIG_CURVE() const { return cacheSize.width / 10 * 8 * 0.5; }
    /// Its diameter.
    double THUMB_SIZE() const { return (cacheSize.width / 10 * 2) * 0.25; }

    /// Where the thumb's centre is at the dial's ends.
    ViewPoint point0Deg() const;
    ViewPoint point150Deg() const;
    /// Where it is at an angle.
    ViewPoint pointAt(double angle) const;
    /// Where it is when the pointer is at `point`, in whatever distance of the centre.
    ViewPoint pointToward(ViewPoint point) const;

    /// The dial angle in whose direction the point lies: from -90 up to, but not including, 270.
    double angleOf(ViewPoint point) const;
    /// The square around the thumb in which a press takes hold of it.
    ViewRect thumbRect(ViewPoint thumb) const;
};

/// Left of the arc's point for the angle, its right edge 8 points away, moved by the offset, whose
/// y points down. `text` is the label's size.
ViewRect angleLabelFrame(const AngleGeometry& dial, double angle, ViewPoint offset, ViewSize text);

/// Where a press means the label: 10 points more on the left and below, none on the other sides.
ViewRect angleLabelHitRect(const ViewRect& frame);

} // namespace deckmate
