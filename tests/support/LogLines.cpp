#include "support/LogLines.h"

#include <string_view>

namespace deckmate::test {

LogLines::LogLines()
    : lines_(std::make_shared<Lines>()),
      before_(Log::setSink([lines = lines_](std::string_view line) {
          const std::lock_guard guard(lines->lock);
          lines->lines.emplace_back(line);
      })) {}

LogLines::~LogLines() {
    Log::setSink(before_);
}

std::vector<std::string> LogLines::lines() const {
    const std::lock_guard guard(lines_->lock);
    return lines_->lines;
}

} // namespace deckmate::test
