// Reading a whole file into one block of memory.
#pragma once

#include "recording/WavArray.h"

#include <filesystem>
#include <string>

namespace deckmate {

struct LoadedFile {
    WavArray bytes;        ///< empty when the file gave no bytes
    std::string error;     ///< why it gave none, in the system's words; else empty
    bool isScarce = false; ///< it gave none for want of memory or descriptors
};

/// Reads a regular file of at most 4 GiB - 1 byte, the reach of a recording's 32-bit offsets.
/// Anything else (folders, devices, pipes, larger files, files that can't be read to the end or
/// don't fit into memory) gives no bytes. A file that is cut short meanwhile gives what it still
/// holds. Never blocks on a pipe. Any thread.
LoadedFile readWholeFile(const std::filesystem::path& path);

} // namespace deckmate
