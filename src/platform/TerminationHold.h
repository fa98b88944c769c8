// Finishing a piece of work before the program ends, when it is told to end.
#pragma once

#include <array>
#include <csignal>

namespace deckmate {

/// While one exists, SIGHUP, SIGINT and SIGTERM wait: those that came are sent again, to this
/// process as it handled them before, when it goes. Signals that were ignored stay so. One inside
/// another is fine; SIGKILL can't be held.
///
///     {
///         const TerminationHold hold;
///         writeTheWholeFile();
///     } // the program ends here if it was told to meanwhile
///
/// Thread: main.
class TerminationHold {
public:
    TerminationHold();
    ~TerminationHold();
    TerminationHold(const TerminationHold&) = delete;
    TerminationHold& operator=(const TerminationHold&) = delete;
    TerminationHold(TerminationHold&&) = delete;
    TerminationHold& operator=(TerminationHold&&) = delete;

private:
    static constexpr std::array<int, 3> held = {SIGHUP, SIGINT, SIGTERM};

    std::array<struct sigaction, held.size()> before_ = {};
};

} // namespace deckmate
