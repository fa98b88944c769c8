#include "controls/LevelGeometry.h"

namespace deckmate {

namespace {

double lowerShare(double height) {
    return 2 * (height / 7);
}

} // namespace

void LevelZones::measureOnce(double height) {
    if (lower.stepHeight != 0.0) {
        return;
    }
    lower.stepHeight = lowerShare(height) / lower.extent;
    upper.stepHeight = (height - lowerShare(height)) / upper.extent;
}

double LevelZones::fillHeight(std::int64_t level, double height) const {
    const auto value = static_cast<double>(level);
    return value >= upper.start ? (value - upper.start) * upper.stepHeight + lowerShare(height)
                                : value * lower.stepHeight;
}

} // namespace deckmate
