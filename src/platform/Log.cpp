#include "platform/Log.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <csignal>
#include <ctime>
#include <memory>
#include <mutex>
#include <string>
#include <utility>

#include <poll.h>
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

/// Keeps a pipe that nobody reads from ending the program: the signal for it is held back on this
/// thread, and dropped if it came.
class WithoutPipeSignal {
public:
    WithoutPipeSignal() {
        sigemptyset(&pipe_);
        sigaddset(&pipe_, SIGPIPE);
        sigset_t pending;
        sigemptyset(&pending);
        sigpending(&pending);
        wasPending_ = sigismember(&pending, SIGPIPE) == 1;
        pthread_sigmask(SIG_BLOCK, &pipe_, &before_);
    }
    ~WithoutPipeSignal() {
        if (!wasPending_) {
            const timespec atOnce{};
            while (sigtimedwait(&pipe_, nullptr, &atOnce) < 0 && errno == EINTR) {
            }
        }
        pthread_sigmask(SIG_SETMASK, &before_, nullptr);
    }
    WithoutPipeSignal(const WithoutPipeSignal&) = delete;
    WithoutPipeSignal& operator=(const WithoutPipeSignal&) = delete;
    WithoutPipeSignal(WithoutPipeSignal&&) = delete;
    WithoutPipeSignal& operator=(WithoutPipeSignal&&) = delete;

private:
    sigset_t pipe_{};
    sigset_t before_{};
    bool wasPending_ = false;
};

/// A pipe that can be written to has room for PIPE_BUF bytes, so no piece makes this wait.
void writeToStandardError(std::string_view line) {
    const WithoutPipeSignal noSignal;
    while (!line.empty()) {
        pollfd standardError{STDERR_FILENO, POLLOUT, 0};
        if (poll(&standardError, 1, 0) != 1 || (standardError.revents & POLLOUT) == 0) {
            return;
        }
        const ssize_t written =
            ::write(STDERR_FILENO, line.data(), std::min<std::size_t>(line.size(), PIPE_BUF));
        if (written <= 0) {
            return;
        }
        line.remove_prefix(static_cast<std::size_t>(written));
    }
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
    writeToStandardError(line);
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
