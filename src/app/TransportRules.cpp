#include "app/TransportRules.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <utility>

namespace deckmate {

namespace {

constexpr double oneThird = 0.33333334F;
constexpr double twoThirds = 0.6666667F;
/// Of the meters' scale in dB, upside down.
constexpr double scaleOffset = 48.0;
/// Far beyond every meter, and safe to round.
constexpr double mostLevel = 1e6;

} // namespace

std::string_view speakerImage(double volume, bool isMuted) {
    if (volume == 0 || isMuted) {
        return "speaker_mute";
    }
    if (volume < oneThird) {
        return "speaker_1";
    }
    return volume < twoThirds ? "speaker_2" : "speaker_3";
}

std::int64_t meterLevel(float peak) {
    const double level = 20.0 * std::log10(static_cast<double>(peak)) + scaleOffset;
    if (std::isnan(level)) {
        return static_cast<std::int64_t>(-mostLevel);
    }
    return std::llround(std::clamp(level, -mostLevel, mostLevel));
}

std::int64_t decibelsFromFullScale(double level) {
    const double decibels = std::fabs(20.0 * std::log10(std::fabs(level)));
    return std::isnan(decibels) ? 0 : static_cast<std::int64_t>(std::min(decibels, mostLevel));
}

std::optional<float> positionOf(double seconds, double duration) {
    if (!(duration > 0)) {
        return std::nullopt;
    }
    return static_cast<float>(std::clamp(seconds, 0.0, duration) / duration);
}

std::optional<int> gainOfTick(std::string_view text) {
    static constexpr std::array<std::pair<std::string_view, int>, 7> angleList = {{{"+36", 36},
                                                                                   {"+24", 24},
                                                                                   {"+12", 12},
                                                                                   {"0", 0},
                                                                                   {"-12", -12},
                                                                                   {"-24", -24},
                                                                                   {"-36", -36}}};
    const auto* const found =
        std::find_if(angleList.begin(), angleList.end(),
                     [text](const auto& entry) { return entry.first == text; });
    return found != angleList.end() ? std::optional(found->second) : std::nullopt;
}

std::int64_t wholeAngle(double angle) {
    return static_cast<std::int64_t>(angle);
}

} // namespace deckmate
