// Decoding many files at the same time, with the results of decoding them one after another.
#pragma once

#include "Options.h"

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

namespace deckmate::tools {

struct DecodeJob {
    std::string source; ///< as given
    std::filesystem::path target;
    /// Earlier jobs that must end first, because they write what this one reads or writes, or read
    /// what this one writes.
    std::vector<std::size_t> after;
};

/// One job per file, in the order given.
std::vector<DecodeJob> planJobs(const Options& options);

/// Runs all jobs, reports each on the standard streams in the order given, and returns the exit
/// status.
int runJobs(const std::vector<DecodeJob>& jobs, const Options& options);

} // namespace deckmate::tools
