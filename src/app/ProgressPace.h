// When the progress of a piece of work is worth showing.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>

namespace deckmate {

/// Short work shows nothing: progress appears after 0.3 s, and only if about as much time is left,
/// so that it doesn't flash up and vanish. It then moves at most every 0.1 s.
class ProgressPace {
public:
    using Duration = std::chrono::nanoseconds;

    /// What to show when so much is done after so much time: 0 to 1000, never less than before;
    /// nothing if what is shown, or that nothing is, may stay. Times don't go back.
    std::optional<int> after(Duration elapsed, std::uint64_t done, std::uint64_t total);

private:
    bool isDue(Duration elapsed, double share) const;

    std::optional<Duration> lastShown_;
    int shown_ = 0;
};

} // namespace deckmate
