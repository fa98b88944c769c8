#include "recording/RecordingFile.h"

#include "recording/FileDescriptor.h"
#include "recording/HugePages.h"

#include <cerrno>
#include <cstdlib>
#include <limits>
#include <optional>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace deckmate {

namespace {

constexpr std::uint64_t largestFile = std::numeric_limits<std::uint32_t>::max();

std::string reason(int error) {
    return std::generic_category().message(error);
}

/// Fills `block` up to `size` or the file's end; returns the bytes read, or -1 with errno set.
std::int64_t readUpTo(int descriptor, std::uint8_t* block, std::uint64_t size) {
    std::uint64_t done = 0;
    int interruptions = 0;
    while (done < size) {
        const ssize_t count = ::read(descriptor, block + done, size - done);
        if (count > 0) {
            done += static_cast<std::uint64_t>(count);
            interruptions = 0;
        } else if (count == 0) {
            break;
        } else if (errno != EINTR || ++interruptions == patience) {
            return -1;
        }
    }
    return static_cast<std::int64_t>(done);
}

LoadedFile nothing(std::string why) {
    return {WavArray(), std::move(why)};
}

} // namespace

LoadedFile readWholeFile(const std::filesystem::path& path) {
    struct stat status = {};
    // Asked before opening, since opening some devices already does something.
    if (::stat(path.c_str(), &status) != 0) {
        return nothing(reason(errno));
    }
    if (!S_ISREG(status.st_mode)) {
        return nothing("Not a regular file");
    }
    const FileDescriptor file(path, O_RDONLY);
    if (!file.isOpen()) {
        return nothing(reason(errno));
    }
    const std::optional<std::uint64_t> regularSize = file.regularSize();
    if (!regularSize) {
        return nothing("Not a regular file");
    }
    const std::uint64_t size = *regularSize;
    if (size == 0) {
        return nothing("Empty file");
    }
    if (size > largestFile) {
        return nothing("File too large for 32-bit offsets");
    }

    // NOLINTNEXTLINE(cppcoreguidelines-no-malloc): a WavArray owns malloc's blocks
    WavArray block(static_cast<std::uint8_t*>(std::malloc(size)), size);
    if (block.bytes() == nullptr) {
        return nothing(reason(ENOMEM));
    }
    adviseHugePages(block.bytes(), size);
    const std::int64_t count = readUpTo(file.number(), block.bytes(), size);
    if (count < 0) {
        return nothing(reason(errno));
    }
    if (count == 0) {
        return nothing("Empty file");
    }
    block.setLength(static_cast<std::uint64_t>(count));
    return {std::move(block), ""};
}

} // namespace deckmate
