#include "recording/FileDescriptor.h"

#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace deckmate {

namespace {

int openPatiently(const std::filesystem::path& path, int flags, mode_t mode) {
    int number = -1;
    for (int tries = 0; tries < patience; ++tries) {
        number = ::open(path.c_str(), flags, mode);
        if (number >= 0 || errno != EINTR) {
            break;
        }
    }
    return number;
}

} // namespace

bool isOtherThanRegular(const std::filesystem::path& path) {
    struct stat status = {};
    return ::stat(path.c_str(), &status) == 0 && !S_ISREG(status.st_mode);
}

FileDescriptor::FileDescriptor(const std::filesystem::path& path, int flags, mode_t mode) {
    constexpr int always = O_CLOEXEC | O_NOCTTY;
    number_ = openPatiently(path, flags | always | O_NONBLOCK, mode);
    // A file server holds a lease on the file and gives it back to whoever waits.
    if (number_ < 0 && errno == EWOULDBLOCK && !isOtherThanRegular(path)) {
        number_ = openPatiently(path, flags | always, mode);
    }
}

FileDescriptor::~FileDescriptor() {
    if (isOpen()) {
        ::close(number_);
    }
}

std::optional<std::uint64_t> FileDescriptor::regularSize() const {
    struct stat status = {};
    if (::fstat(number_, &status) != 0 || !S_ISREG(status.st_mode)) {
        return std::nullopt;
    }
    return static_cast<std::uint64_t>(status.st_size);
}

bool FileDescriptor::isFileAt(const std::filesystem::path& path) const {
    struct stat mine = {};
    struct stat other = {};
    return ::fstat(number_, &mine) == 0 && ::stat(path.c_str(), &other) == 0 &&
           mine.st_dev == other.st_dev && mine.st_ino == other.st_ino;
}

bool FileDescriptor::close() {
    const int number = number_;
    number_ = -1;
    return ::close(number) == 0;
}

} // namespace deckmate
