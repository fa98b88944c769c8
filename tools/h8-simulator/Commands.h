// The simulator's commands: lines of text that change what it is and does.
#pragma once

#include "h8-simulator/Simulator.h"

#include <functional>
#include <string>
#include <string_view>

namespace deckmate::tools {

struct ParsedCommand {
    std::function<void(Simulator& simulator)> run; ///< null where `error` says why; never throws
    std::string error;                             ///< one line of printable characters
};

/// Understands a line, which may hold anything. An empty line and a comment, which begins with #,
/// do nothing.
ParsedCommand parseCommand(std::string_view line);

/// One line for each command, with a line break.
std::string commandHelp();

} // namespace deckmate::tools
