// Lines for whoever has started this program.
#pragma once

#include <string_view>

namespace deckmate {

/// Writes to standard output or standard error, by its descriptor. What the reader doesn't take at
/// once is dropped: one that hangs doesn't hold up the caller, one that is gone doesn't end the
/// program. Thread: any.
void writeToStream(int descriptor, std::string_view text);

} // namespace deckmate
