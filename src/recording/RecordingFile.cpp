#include "recording/RecordingFile.h"

#include "recording/FileDescriptor.h"
#include "recording/HugePages.h"
#include "recording/Parallel.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <limits>
#include <new>
#include <optional>
#include <system_error>
#include <vector>

#include <fcntl.h>
#include <sys/types.h>
#include <unistd.h>

namespace deckmate {

namespace {

constexpr std::uint64_t largestFile = std::numeric_limits<std::uint32_t>::max();
constexpr std::uint64_t pieceSize = std::uint64_t{16} << 20;

/// Fills `block` from `offset` on, up to `size` bytes or the file's end; returns the bytes read, or
/// the negated errno.
std::int64_t readUpTo(int descriptor, std::uint8_t* block, std::uint64_t offset,
                      std::uint64_t size) {
    std::uint64_t done = 0;
    int interruptions = 0;
    while (done < size) {
        const ssize_t count = ::pread(descriptor, block + offset + done, size - done,
                                      static_cast<off_t>(offset + done));
        if (count > 0) {
            done += static_cast<std::uint64_t>(count);
            interruptions = 0;
        } else if (count == 0) {
            break;
        } else if (errno != EINTR || ++interruptions == patience) {
            return -errno;
        }
    }
    return static_cast<std::int64_t>(done);
}

/// The same for the whole file, several pieces at a time. What lies behind the first piece that a
/// shrinking file cut short is left out.
std::int64_t readInPieces(int descriptor, std::uint8_t* block, std::uint64_t size) {
    const std::uint64_t pieces = (size + pieceSize - 1) / pieceSize;
    const auto sizeOf = [&](std::size_t piece) {
        return std::min(pieceSize, size - piece * pieceSize);
    };
    std::vector<std::int64_t> counts(pieces);
    inParallel(pieces, [&](std::size_t piece) {
        counts[piece] = readUpTo(descriptor, block, piece * pieceSize, sizeOf(piece));
    });
    std::int64_t total = 0;
    for (std::size_t piece = 0; piece < pieces; ++piece) {
        if (counts[piece] < 0) {
            return counts[piece];
        }
        total += counts[piece];
        if (static_cast<std::uint64_t>(counts[piece]) < sizeOf(piece)) {
            break;
        }
    }
    return total;
}

LoadedFile nothing(std::string why) {
    return {WavArray(), std::move(why), false};
}

LoadedFile nothing(int error) {
    const bool isScarce = error == ENOMEM || error == EMFILE || error == ENFILE;
    return {WavArray(), std::generic_category().message(error), isScarce};
}

} // namespace

LoadedFile readWholeFile(const std::filesystem::path& path) try {
    if (isOtherThanRegular(path)) {
        return nothing("Not a regular file");
    }
    const FileDescriptor file(path, O_RDONLY);
    if (!file.isOpen()) {
        return nothing(errno);
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
        return nothing(ENOMEM);
    }
    adviseHugePages(block.bytes(), size);
    const std::int64_t count = readInPieces(file.number(), block.bytes(), size);
    if (count < 0) {
        return nothing(static_cast<int>(-count));
    }
    if (count == 0) {
        return nothing("Empty file");
    }
    block.setLength(static_cast<std::uint64_t>(count));
    return {std::move(block), "", false};
} catch (const std::bad_alloc&) {
    return nothing(ENOMEM);
}

} // namespace deckmate
