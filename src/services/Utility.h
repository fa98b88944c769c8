// The settings store and a stopwatch.
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

namespace deckmate {

class Utility {
public:
    /// Nothing until the first start.
    static std::optional<std::chrono::steady_clock::time_point> S_StopWatch_start;

    /// Keeps the value among the user's preferences, in place of an earlier one. Thread: any.
    static void store(std::string_view key, std::string_view valueString);
    /// Nothing if no value is kept under the key. Thread: any.
    static std::optional<std::string> getStringValue(std::string_view key);

    /// Thread: main, as for stopWatch_stop.
    static void stopWatch_start();
    /// Seconds since the last start, by the monotonic clock; goes on running. 0 if never started.
    static double stopWatch_stop();
};

} // namespace deckmate
