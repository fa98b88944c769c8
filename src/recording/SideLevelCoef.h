// The factors by which the side signal is multiplied at each stereo width.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace deckmate {

inline constexpr int maxAngle = 150;

/// Indexed by the angle 0..150. 10^(d/20) with d in decibels: silent at 0; -48 dB at 1, in equal
/// steps to -21 dB at 15; from there d = (i - 120) / 5, so that 120 is unity and 150 is +6 dB.
extern const std::array<float, maxAngle + 1> SideLevelCoef;

/// The factor at `angle`; angles outside 0..150 are taken as the nearest end.
inline float sideLevel(std::int64_t angle) {
    const std::int64_t index = angle < 0 ? 0 : angle > maxAngle ? maxAngle : angle;
    return SideLevelCoef[static_cast<std::size_t>(index)];
}

} // namespace deckmate
