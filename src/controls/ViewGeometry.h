// Points and rectangles of a view whose y axis points up.
#pragma once

namespace deckmate {

/// In points, from the view's lower left corner.
struct ViewPoint {
    double x = 0.0;
    double y = 0.0;

    bool operator==(const ViewPoint&) const = default;
};

struct ViewSize {
    double width = 0.0;
    double height = 0.0;

    bool operator==(const ViewSize&) const = default;
};

/// (x, y) is the lower left corner.
struct ViewRect {
    double x = 0.0;
    double y = 0.0;
    double width = 0.0;
    double height = 0.0;

    bool operator==(const ViewRect&) const = default;
    /// The left and the lower edge belong to it, the right and the upper one don't.
    bool contains(ViewPoint point) const {
        return point.x >= x && point.x < x + width && point.y >= y && point.y < y + height;
    }
    ViewPoint centre() const { return {x + 0.5 * width, y + 0.5 * height}; }
};

} // namespace deckmate
