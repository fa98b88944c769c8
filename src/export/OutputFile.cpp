#include "export/OutputFile.h"

#include <cerrno>
#include <ctime>
#include <optional>

#include <fcntl.h>
#include <sys/types.h>
#include <unistd.h>

namespace deckmate {

OutputFile::FileSizeSignalBlock::FileSizeSignalBlock() {
    sigemptyset(&signal_);
    sigaddset(&signal_, SIGXFSZ);
    pthread_sigmask(SIG_BLOCK, &signal_, &before_);
}

OutputFile::FileSizeSignalBlock::~FileSizeSignalBlock() {
    if (sigismember(&before_, SIGXFSZ) == 0) {
        const timespec now = {};
        while (sigtimedwait(&signal_, nullptr, &now) < 0 && errno == EINTR) {
        }
        pthread_sigmask(SIG_SETMASK, &before_, nullptr);
    }
}

OutputFile::OutputFile(const std::filesystem::path& path, const WriteRules& rules)
    : file_(isOtherThanRegular(path)
                ? FileDescriptor()
                : FileDescriptor(path, O_WRONLY | O_CREAT | (rules.mayOverwrite ? 0 : O_EXCL),
                                 0666)) {
    const std::optional<std::uint64_t> size = file_.regularSize();
    // Emptied only now that it is known which file this is: names can change hands at any moment.
    // And only if need be: some file systems write a file that was emptied to the disk on closing.
    isGood_ = size && !file_.isFileAt(rules.untouchable) &&
              (*size == 0 || ::ftruncate(file_.number(), 0) == 0);
}

void OutputFile::expectSize(std::uint64_t size) {
    if (isGood_) {
        static_cast<void>(
            ::fallocate(file_.number(), FALLOC_FL_KEEP_SIZE, 0, static_cast<off_t>(size)));
    }
}

void OutputFile::append(std::span<const std::uint8_t> bytes) {
    write(bytes, size_);
    size_ += bytes.size();
}

void OutputFile::rewriteStart(std::span<const std::uint8_t> bytes) {
    write(bytes, 0);
}

void OutputFile::write(std::span<const std::uint8_t> bytes, std::uint64_t offset) {
    int idle = 0;
    while (isGood_ && !bytes.empty()) {
        const ssize_t count =
            ::pwrite(file_.number(), bytes.data(), bytes.size(), static_cast<off_t>(offset));
        if (count > 0) {
            bytes = bytes.subspan(static_cast<std::size_t>(count));
            offset += static_cast<std::uint64_t>(count);
            idle = 0;
        } else if ((count < 0 && errno != EINTR) || ++idle == patience) {
            isGood_ = false;
        }
    }
}

bool OutputFile::close() {
    const std::optional<std::uint64_t> size = isGood_ ? std::nullopt : file_.regularSize();
    if (size) {
        // Gives back the room that was asked for and not used; there is nothing to do if it fails.
        static_cast<void>(::ftruncate(file_.number(), static_cast<off_t>(*size)));
    }
    // Some file systems report a full volume or quota only here.
    const bool isClosed = file_.close();
    isGood_ = isGood_ && isClosed;
    return isGood_;
}

bool writeWholeFile(const std::filesystem::path& path, std::span<const std::uint8_t> bytes,
                    const WriteRules& rules) {
    OutputFile file(path, rules);
    file.append(bytes);
    return file.close();
}

} // namespace deckmate
