#include "export/OutputFile.h"

#include <cerrno>
#include <csignal>
#include <ctime>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace deckmate {

namespace {

// Calls in a row that a signal interrupted, or that took nothing, before the file counts as failed.
constexpr int patience = 100;

/// Keeps this thread from being killed for writing beyond the file-size limit; the write then
/// reports it.
class FileSizeSignalBlock {
public:
    FileSizeSignalBlock() {
        sigemptyset(&signal_);
        sigaddset(&signal_, SIGXFSZ);
        pthread_sigmask(SIG_BLOCK, &signal_, &before_);
    }
    ~FileSizeSignalBlock() {
        if (sigismember(&before_, SIGXFSZ) == 0) {
            const timespec now = {};
            while (sigtimedwait(&signal_, nullptr, &now) < 0 && errno == EINTR) {
            }
            pthread_sigmask(SIG_SETMASK, &before_, nullptr);
        }
    }
    FileSizeSignalBlock(const FileSizeSignalBlock&) = delete;
    FileSizeSignalBlock& operator=(const FileSizeSignalBlock&) = delete;
    FileSizeSignalBlock(FileSizeSignalBlock&&) = delete;
    FileSizeSignalBlock& operator=(FileSizeSignalBlock&&) = delete;

private:
    sigset_t signal_ = {};
    sigset_t before_ = {};
};

int openForWriting(const std::filesystem::path& path) {
    // Non-blocking, so that a pipe without a reader fails instead of waiting.
    constexpr int flags = O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOCTTY | O_NONBLOCK;
    constexpr mode_t mode = 0666;
    int descriptor = -1;
    for (int tries = 0; tries < patience; ++tries) {
        descriptor = ::open(path.c_str(), flags, mode);
        if (descriptor >= 0 || errno != EINTR) {
            break;
        }
    }
    return descriptor;
}

bool isRegular(int descriptor) {
    struct stat status = {};
    return ::fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode);
}

bool writeAll(int descriptor, std::span<const std::uint8_t> bytes) {
    int idle = 0;
    while (!bytes.empty()) {
        const ssize_t count = ::write(descriptor, bytes.data(), bytes.size());
        if (count > 0) {
            bytes = bytes.subspan(static_cast<std::size_t>(count));
            idle = 0;
        } else if ((count < 0 && errno != EINTR) || ++idle == patience) {
            return false;
        }
    }
    return true;
}

} // namespace

bool writeWholeFile(const std::filesystem::path& path, std::span<const std::uint8_t> bytes) {
    const FileSizeSignalBlock block;
    const int descriptor = openForWriting(path);
    if (descriptor < 0) {
        return false;
    }
    const bool isWritten = isRegular(descriptor) && writeAll(descriptor, bytes);
    // Some file systems report a full volume or quota only here. The descriptor is gone either way.
    const bool isClosed = ::close(descriptor) == 0;
    return isWritten && isClosed;
}

} // namespace deckmate
