#include "recording/FileDescriptor.h"

#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace deckmate {

FileDescriptor::FileDescriptor(const std::filesystem::path& path, int flags, mode_t mode) {
    constexpr int always = O_CLOEXEC | O_NOCTTY | O_NONBLOCK;
    for (int tries = 0; tries < patience; ++tries) {
        number_ = ::open(path.c_str(), flags | always, mode);
        if (number_ >= 0 || errno != EINTR) {
            return;
        }
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

bool FileDescriptor::close() {
    const int number = number_;
    number_ = -1;
    return ::close(number) == 0;
}

} // namespace deckmate
