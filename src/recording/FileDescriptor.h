// An open file of the system's, as both the loading and the saving of recordings need it.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>

#include <sys/types.h>

namespace deckmate {

/// How often in a row a call may be interrupted by a signal, or do nothing, before the file counts
/// as failed: one that is interrupted this often will never get through.
inline constexpr int patience = 100;

/// Whether something is there that is no regular file, so that opening it might already do
/// something.
bool isOtherThanRegular(const std::filesystem::path& path);

/// Owns a descriptor. For one thread at a time.
class FileDescriptor {
public:
    FileDescriptor() = default;
    /// Opens `path` as open(2) does. Programs started later don't inherit it; a pipe without
    /// another end, or a terminal, doesn't hold up the caller. Failure leaves errno set.
    explicit FileDescriptor(const std::filesystem::path& path, int flags, mode_t mode = 0);
    ~FileDescriptor();
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;
    FileDescriptor(FileDescriptor&&) = delete;
    FileDescriptor& operator=(FileDescriptor&&) = delete;

    bool isOpen() const { return number_ >= 0; }
    int number() const { return number_; }
    /// The size in bytes of a regular file; nothing for all other kinds.
    std::optional<std::uint64_t> regularSize() const;
    /// Whether the path leads to this very file.
    bool isFileAt(const std::filesystem::path& path) const;
    /// Whether all that was written has arrived, as far as the system says. Gone either way. NO if
    /// nothing was open.
    bool close();

private:
    int number_ = -1;
};

} // namespace deckmate
