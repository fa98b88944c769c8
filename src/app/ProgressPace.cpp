#include "app/ProgressPace.h"

#include <algorithm>

namespace deckmate {

namespace {

using namespace std::chrono_literals;

constexpr ProgressPace::Duration patience = 300ms;
constexpr ProgressPace::Duration step = 100ms;
constexpr double whole = 1000;

} // namespace

std::optional<int> ProgressPace::after(Duration elapsed, std::uint64_t done, std::uint64_t total) {
    if (total == 0) {
        return std::nullopt;
    }
    const double share = static_cast<double>(std::min(done, total)) / static_cast<double>(total);
    const int now = static_cast<int>(share * whole);
    if (!isDue(elapsed, share) || (lastShown_ && now <= shown_)) {
        return std::nullopt;
    }
    lastShown_ = elapsed;
    shown_ = now;
    return now;
}

bool ProgressPace::isDue(Duration elapsed, double share) const {
    if (lastShown_) {
        return elapsed - *lastShown_ >= step || share >= 1;
    }
    // The rest takes (1 - share) / share times as long as what is done.
    const double rest = (1 - share) * static_cast<double>(elapsed.count());
    return elapsed >= patience && rest >= share * static_cast<double>(patience.count());
}

} // namespace deckmate
