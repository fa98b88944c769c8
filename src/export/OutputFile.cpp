#include "export/OutputFile.h"

#include "recording/FileDescriptor.h"

#include <cerrno>
#include <csignal>
#include <ctime>

#include <fcntl.h>
#include <sys/types.h>
#include <unistd.h>

namespace deckmate {

namespace {

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

bool writeWholeFile(const std::filesystem::path& path, std::span<const std::uint8_t> bytes,
                    const WriteRules& rules) {
    if (isOtherThanRegular(path)) {
        return false;
    }
    const FileSizeSignalBlock block;
    constexpr mode_t mode = 0666;
    FileDescriptor file(path, O_WRONLY | O_CREAT | (rules.mayOverwrite ? 0 : O_EXCL), mode);
    // Emptied only now that it is known which file this is: names can change hands at any moment.
    if (!file.isOpen() || !file.regularSize() || file.isFileAt(rules.untouchable)) {
        return false;
    }
    const bool isWritten = ::ftruncate(file.number(), 0) == 0 && writeAll(file.number(), bytes);
    // Some file systems report a full volume or quota only here.
    const bool isClosed = file.close();
    return isWritten && isClosed;
}

} // namespace deckmate
