// Lines for another program or a person to read, one by one.
#pragma once

#include <string>

namespace deckmate::tools {

/// Writes the line and its end at once. Waits for a reader that is slow, but not at an interrupt
/// (see Interruptible). NO when it could not be written, with errno, which is EINTR at an
/// interrupt.
bool printLine(int descriptor, const std::string& line);

} // namespace deckmate::tools
