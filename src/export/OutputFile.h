// Writing a whole file from memory.
#pragma once

#include <cstdint>
#include <filesystem>
#include <span>

namespace deckmate {

struct WriteRules {
    std::filesystem::path untouchable{}; ///< a file that is not written to, under whatever name
    bool mayOverwrite = true;            ///< else only a file that doesn't exist yet is written
};

/// Creates or overwrites the regular file at `path` in place, without a temporary file, and returns
/// whether every byte was accepted and the file closed well. What was written before a failure
/// stays. Full volumes, quotas and file-size limits are failures, never signals. Targets that are
/// not regular files are refused. Any thread.
bool writeWholeFile(const std::filesystem::path& path, std::span<const std::uint8_t> bytes,
                    const WriteRules& rules = {});

} // namespace deckmate
