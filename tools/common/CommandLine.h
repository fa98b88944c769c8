// Command-line parsing as all tools do it.
#pragma once

#include <CLI/CLI.hpp>

#include <cstdint>
#include <optional>
#include <string>

namespace deckmate::tools {

/// A parser with `--help` and `--version`.
class CommandLine : public CLI::App {
public:
    CommandLine(const std::string& name, const std::string& description);

    /// Parses the arguments. An exit status where the program is to end at once: after `--help` or
    /// `--version`, and after wrong usage, which is explained on standard error.
    std::optional<int> run(int argc, char** argv);

    /// What was given on the command line for a value that the parser has handed over: the parser
    /// would take "[a,b]" apart, so that arguments in brackets go through it marked.
    static std::string asGiven(std::string value);
};

/// A decimal number in `smallest..largest`, in the same notation under every locale.
/// Throws CLI::ValidationError, naming `option`, for anything else.
double numberWithin(const std::string& option, const std::string& text, double smallest,
                    double largest);

/// A whole number in `smallest..largest`, else as above.
std::uint64_t wholeNumberWithin(const std::string& option, const std::string& text,
                                std::uint64_t smallest, std::uint64_t largest);

} // namespace deckmate::tools
