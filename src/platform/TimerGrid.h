// When timers are due.
#pragma once

#include <algorithm>
#include <chrono>

namespace deckmate {

using TimerClock = std::chrono::steady_clock;

/// The time `after` from `now`; a negative wait is none, one beyond the clock's end ends there.
inline TimerClock::time_point dueAfter(TimerClock::time_point now, std::chrono::nanoseconds after) {
    const auto longest = TimerClock::time_point::max() - now;
    return now + std::clamp<TimerClock::duration>(after, TimerClock::duration::zero(), longest);
}

/// The next multiple of the interval after `due` that is still to come at `now`: a late call
/// doesn't shift those behind it, and those that were missed are left out.
inline TimerClock::time_point dueNext(TimerClock::time_point due, std::chrono::nanoseconds interval,
                                      TimerClock::time_point now) {
    const auto missed = std::max(now - due, TimerClock::duration::zero()) / interval;
    return dueAfter(due + missed * interval, interval);
}

} // namespace deckmate
