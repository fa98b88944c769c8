// Watches what is logged.
#pragma once

#include "platform/Log.h"

#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace deckmate::test {

/// As long as it exists, lines of the log come here and nowhere else. Thread: any.
class LogLines {
public:
    LogLines();
    ~LogLines();
    LogLines(const LogLines&) = delete;
    LogLines& operator=(const LogLines&) = delete;
    LogLines(LogLines&&) = delete;
    LogLines& operator=(LogLines&&) = delete;

    std::vector<std::string> lines() const;

private:
    struct Lines {
        std::mutex lock;
        std::vector<std::string> lines;
    };

    std::shared_ptr<Lines> lines_;
    Log::Sink before_;
};

} // namespace deckmate::test
