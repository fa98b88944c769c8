#include "h8-simulator/LineReader.h"

#include <algorithm>
#include <utility>

namespace deckmate::tools {

std::vector<LineReader::Line> LineReader::read(std::string_view text) {
    std::vector<Line> lines;
    while (!text.empty()) {
        const std::size_t size = std::min(text.find('\n'), text.size());
        if (current_.size() + size > longest) {
            isTooLong_ = true;
            current_.clear();
        }
        if (!isTooLong_) {
            current_ += text.substr(0, size);
        }
        if (size == text.size()) {
            break;
        }
        lines.push_back(isTooLong_ ? std::nullopt : Line(std::exchange(current_, {})));
        isTooLong_ = false;
        text.remove_prefix(size + 1);
    }
    return lines;
}

std::vector<LineReader::Line> LineReader::finish() {
    return isTooLong_ || !current_.empty() ? read("\n") : std::vector<Line>();
}

} // namespace deckmate::tools
