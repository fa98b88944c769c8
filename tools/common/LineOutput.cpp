#include "common/LineOutput.h"

#include "common/Interruptible.h"

#include <cerrno>
#include <string_view>

#include <poll.h>
#include <unistd.h>

namespace deckmate::tools {

namespace {

// An interrupt between being asked for and waiting would go unnoticed.
constexpr int lookAgain = 500; // milliseconds

} // namespace

bool printLine(int descriptor, const std::string& line) {
    const std::string text = line + "\n";
    std::string_view left = text;
    while (!left.empty()) {
        pollfd output = {.fd = descriptor, .events = POLLOUT, .revents = 0};
        const int ready = poll(&output, 1, Interruptible::isInterrupted() ? 0 : lookAgain);
        if (ready == 0 && Interruptible::isInterrupted()) {
            errno = EINTR;
            return false;
        }
        const ssize_t written =
            ready == 1 ? write(descriptor, left.data(), left.size()) : ssize_t{ready};
        if (written < 0 && errno != EINTR && errno != EAGAIN) {
            return false;
        }
        if (written > 0) {
            left.remove_prefix(static_cast<std::size_t>(written));
        }
    }
    return true;
}

} // namespace deckmate::tools
