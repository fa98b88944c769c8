// Writing a file in place.
#pragma once

#include "recording/FileDescriptor.h"

#include <csignal>
#include <cstdint>
#include <filesystem>
#include <span>

namespace deckmate {

struct WriteRules {
    std::filesystem::path untouchable{}; ///< a file that is not written to, under whatever name
    bool mayOverwrite = true;            ///< else only a file that doesn't exist yet is written
};

/// A regular file that is created or overwritten in place, without a temporary file. What was
/// written before a failure stays. Full volumes, quotas and file-size limits are failures, never
/// signals: those are held back in the thread that opened the file, and in threads begun by it,
/// until the file is gone. To be opened and destroyed on one thread, used by one at a time.
class OutputFile {
public:
    /// Opens and empties the file, unless that fails, the rules forbid it or it isn't a regular
    /// one.
    OutputFile(const std::filesystem::path& path, const WriteRules& rules);

    bool isGood() const { return isGood_; }
    /// Asks for room on the volume for a file of `size` bytes, which makes writing them faster. No
    /// more than a hint: where there is no such room, the writes tell.
    void expectSize(std::uint64_t size);
    /// Writes behind what was written. From the first failure on, nothing more is written.
    void append(std::span<const std::uint8_t> bytes);
    /// Writes over the file's beginning, no more than there is.
    void rewriteStart(std::span<const std::uint8_t> bytes);
    /// Whether every byte was accepted and the file closed well.
    bool close();

private:
    void write(std::span<const std::uint8_t> bytes, std::uint64_t offset);

    /// Keeps this thread from being killed for writing beyond the file-size limit; the write then
    /// reports it.
    class FileSizeSignalBlock {
    public:
        FileSizeSignalBlock();
        ~FileSizeSignalBlock();
        FileSizeSignalBlock(const FileSizeSignalBlock&) = delete;
        FileSizeSignalBlock& operator=(const FileSizeSignalBlock&) = delete;
        FileSizeSignalBlock(FileSizeSignalBlock&&) = delete;
        FileSizeSignalBlock& operator=(FileSizeSignalBlock&&) = delete;

    private:
        sigset_t signal_ = {};
        sigset_t before_ = {};
    };

    FileSizeSignalBlock block_;
    FileDescriptor file_;
    std::uint64_t size_ = 0;
    bool isGood_ = false;
};

/// Writes a whole file from memory; whether every byte was accepted and the file closed well. Any
/// thread.
bool writeWholeFile(const std::filesystem::path& path, std::span<const std::uint8_t> bytes,
                    const WriteRules& rules = {});

} // namespace deckmate
