#include "controls/LevelGeometry.h"

namespace deckmate {

namespace {

double lowerShare(double height) {
    return 2 * (height / 7);
}

} // namespace

void LevelZones::measureOnce(double height) {
    if (S_RANGE_0_23.stepHeight != 0.0) {
        return;
    }
    S_RANGE_0_23.stepHeight = lowerShare(height) / S_RANGE_0_23.extent;
    S_RANGE_24_54.stepHeight = (height - lowerShare(height)) / S_RANGE_24_54.extent;
}

double LevelZones::fillHeight(std::int64_t level, double height) const {
    const auto value = static_cast<double>(level);
    return value >= S_RANGE_24_54.start
               ? (value - S_RANGE_24_54.start) * S_RANGE_24_54.stepHeight + lowerShare(height)
               : value * S_RANGE_0_23.stepHeight;
}

} // namespace deckmate
