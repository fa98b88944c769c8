// The command line of h8-simulator.
#pragma once

#include "h8-simulator/Commands.h"

#include <string>
#include <variant>
#include <vector>

namespace deckmate::tools {

struct Options {
    std::string name = "H8 ORLO MIDI 1"; ///< of the sequencer port
    std::string rawDevice;               ///< a path, instead of the port
    bool hasMidi = true;
    bool isDaemon = false;
    std::vector<ParsedCommand> commands; ///< to begin with
};

/// The options, or the exit status where there is nothing to do (`--help`, wrong usage).
std::variant<Options, int> parseOptions(int argc, char** argv);

} // namespace deckmate::tools
