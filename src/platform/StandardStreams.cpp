#include "platform/StandardStreams.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <csignal>
#include <ctime>

#include <poll.h>
#include <unistd.h>

namespace deckmate {

namespace {

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

} // namespace

void writeToStream(int descriptor, std::string_view text) {
    const WithoutPipeSignal noSignal;
    while (!text.empty()) {
        pollfd stream{descriptor, POLLOUT, 0};
        if (poll(&stream, 1, 0) != 1 || (stream.revents & POLLOUT) == 0) {
            return;
        }
        // A pipe that can be written to has room for that many bytes, so no piece makes this wait.
        const ssize_t written =
            ::write(descriptor, text.data(), std::min<std::size_t>(text.size(), PIPE_BUF));
        if (written <= 0) {
            return;
        }
        text.remove_prefix(static_cast<std::size_t>(written));
    }
}

} // namespace deckmate
