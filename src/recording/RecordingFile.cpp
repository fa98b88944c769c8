#include "recording/RecordingFile.h"

#include "recording/HugePages.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <limits>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace deckmate {

namespace {

constexpr std::uint64_t largestFile = std::numeric_limits<std::uint32_t>::max();
// A signal may interrupt a call now and then; one that is interrupted this often in a row will
// never get through.
constexpr int patience = 100;

std::string reason(int error) {
    return std::generic_category().message(error);
}

class Descriptor {
public:
    explicit Descriptor(const std::filesystem::path& path) {
        // A pipe without a writer must not hold up the caller.
        constexpr int flags = O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK;
        for (int tries = 0; tries < patience; ++tries) {
            number_ = ::open(path.c_str(), flags);
            if (number_ >= 0 || errno != EINTR) {
                return;
            }
        }
    }
    ~Descriptor() {
        if (number_ >= 0) {
            ::close(number_);
        }
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    Descriptor(Descriptor&&) = delete;
    Descriptor& operator=(Descriptor&&) = delete;

    int number() const { return number_; }

private:
    int number_ = -1;
};

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
    const Descriptor file(path);
    if (file.number() < 0 || ::fstat(file.number(), &status) != 0) {
        return nothing(reason(errno));
    }
    if (!S_ISREG(status.st_mode)) {
        return nothing("Not a regular file");
    }
    const auto size = static_cast<std::uint64_t>(status.st_size);
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
