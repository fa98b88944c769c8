#include "platform/Log.h"

#include "platform/StandardStreams.h"

#include <algorithm>
#include <memory>
#include <mutex>
#include <string>
#include <utility>

#include <syslog.h>
#include <unistd.h>

namespace deckmate {

namespace {

struct Settings {
    std::mutex lock;
    std::shared_ptr<const Log::Sink> sink; ///< null for the system log
    std::mutex standardErrorLock;          ///< lines don't mix
};

/// Never destroyed: whatever is destroyed at the end of the program may still log.
Settings& settings() {
    static auto* const theOnes = new Settings;
    return *theOnes;
}

bool isControl(char character) {
    const auto code = static_cast<unsigned char>(character);
    return code < 0x20 || code == 0x7f;
}

} // namespace

void Log::write(std::string_view text) {
    std::string line(text);
    std::replace_if(line.begin(), line.end(), isControl, '?');

    std::shared_ptr<const Sink> sink;
    {
        const std::lock_guard guard(settings().lock);
        sink = settings().sink;
    }
    if (sink != nullptr) {
        (*sink)(line);
        return;
    }
    syslog(LOG_USER | LOG_INFO, "%s", line.c_str());
    line += '\n';
    const std::lock_guard guard(settings().standardErrorLock);
    writeToStream(STDERR_FILENO, line);
}

Log::Sink Log::setSink(Sink sink) {
    auto next = sink ? std::make_shared<const Sink>(std::move(sink)) : nullptr;
    {
        const std::lock_guard guard(settings().lock);
        settings().sink.swap(next);
    }
    return next != nullptr ? *next : nullptr;
}

} // namespace deckmate
