// Cuts what is read from standard input into lines.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace deckmate::tools {

class LineReader {
public:
    static constexpr std::size_t longest = std::size_t{4} << 20;

    /// Nothing stands for a line that is longer.
    using Line = std::optional<std::string>;

    /// The lines that end in this text, without their line breaks.
    std::vector<Line> read(std::string_view text);
    /// At the end of input: what the last line break was followed by, if by anything.
    std::vector<Line> finish();

private:
    std::string current_;
    bool isTooLong_ = false;
};

} // namespace deckmate::tools
