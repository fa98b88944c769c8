// The command line of h8-decode.
#pragma once

#include "export/ExportSave.h"

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace deckmate::tools {

struct Options {
    std::vector<std::string> files; ///< as given
    bool info = false;
    double angle = 120;
    double gain = 0; ///< decibels, positive is louder
    SaveChoices choices;
    std::optional<std::filesystem::path> output;
    std::optional<std::filesystem::path> outputDir;
    bool force = false;
    std::size_t jobs = 1;
};

/// The options, or the exit status where there is nothing to do (`--help`, wrong usage).
std::variant<Options, int> parseOptions(int argc, char** argv);

} // namespace deckmate::tools
