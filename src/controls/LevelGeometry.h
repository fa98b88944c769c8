// How high a level stands in a meter.
#pragma once

#include <cstdint>

namespace deckmate {

/// The lower zone, levels 0 to 23, has two sevenths of the height; the upper one, levels 24 to 54,
/// has five.
struct LevelZone {
    double start = 0.0;
    double stepHeight = 0.0; ///< points a level
    double extent = 0.0;     ///< where the lower zone ends; how many levels the upper one has
};

struct LevelZones {
    LevelZone S_RANGE_0_23{0.0, 0.0, 24.0};
    LevelZone S_RANGE_24_54{24.0, 0.0, 30.0};

    /// The steps of a meter of this height, unless there are steps already.
    void measureOnce(double height);
    /// How far the bar is filled from its bottom, in a meter of this height: its lower zone's share
    /// follows the height, the steps stay as they were measured.
    double fillHeight(std::int64_t level, double height) const;
};

} // namespace deckmate
