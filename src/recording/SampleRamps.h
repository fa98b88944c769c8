// The two records from which a player's buffers are ramped from one setting to the next.
#pragma once

#include <cstdint>

namespace deckmate {

/// Decibels in the divisor convention: a user gain of +g is held as -g.
struct AdjustDBInfo {
    std::int64_t curGain = 0;  ///< for the buffer being processed
    std::int64_t prevGain = 0; ///< the one used for the buffer before
};

/// Indices into `SideLevelCoef`.
struct AdjustAngleInfo {
    std::int64_t curAngle = 0;  ///< target
    std::int64_t prevAngle = 0; ///< the one used for the buffer before
};

} // namespace deckmate
