// The system log, for lines of fixed text.
#pragma once

#include <functional>
#include <string_view>

namespace deckmate {

/// Each text becomes one line on standard error and in the system's log (syslog(3), facility user).
/// Standard error does without what its reader doesn't take at once.
class Log {
public:
    /// Gets each line, without a line break. Called on the writing thread, by several at a time.
    using Sink = std::function<void(std::string_view line)>;

    /// Control characters, line breaks among them, become question marks. Thread: any.
    static void write(std::string_view text);
    /// From now on lines go to the sink only; null means the system log. Returns the sink before,
    /// which may still be in use by a thread that is writing. Thread: any.
    static Sink setSink(Sink sink);
};

} // namespace deckmate
