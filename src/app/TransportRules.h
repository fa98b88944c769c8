// What the main window decides about playing, without a window.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace deckmate {

/// The name of the speaker's image: waves by thirds of the volume.
std::string_view speakerImage(double volume, bool isMuted);

/// A meter's level for a peak (1.0 is full scale): decibels above -48, rounded half away from zero.
/// Silence gives the lowest level that there is.
std::int64_t meterLevel(float peak);
/// The whole decibels between the level and full scale, whatever their sign.
std::int64_t decibelsFromFullScale(double level);

/// Where the position stands in the recording, 0 to 1; nothing for a recording without a length.
std::optional<float> positionOf(double seconds, double duration);

/// The gain that a label of the scale stands for.
std::optional<int> gainOfTick(std::string_view text);

/// A stereo width as the player takes it: cut toward zero.
std::int64_t wholeAngle(double angle);

/// The settings that count when playing goes on after a pause.
struct PlaySettings {
    double stereo = 0; ///< of the dial
    double gain = 0;   ///< whole decibels

    bool operator==(const PlaySettings&) const = default;
};

} // namespace deckmate
