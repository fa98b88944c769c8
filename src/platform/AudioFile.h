// Reading the samples of an audio file, packet by packet, as they lie in the file.
#pragma once

#include "platform/StreamDescription.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <span>
#include <vector>

namespace deckmate {

/// An open WAVE file of plain samples. It is read from the disk whenever packets are asked for, so
/// that it may shrink, grow or go away meanwhile.
///
///     std::unique_ptr<AudioFile> file;
///     if (AudioFile::open("take.wav", file) == 0) {
///         const AudioFile::Packets read = file->readPackets(0, 4800, room);
///     }
///
/// Thread: one at a time.
class AudioFile {
public:
    AudioFile() = default;
    virtual ~AudioFile() = default;
    AudioFile(const AudioFile&) = delete;
    AudioFile& operator=(const AudioFile&) = delete;
    AudioFile(AudioFile&&) = delete;
    AudioFile& operator=(AudioFile&&) = delete;

    /// Opens a regular file read-only. On failure `file` is null.
    static AudioStatus open(const std::filesystem::path& path, std::unique_ptr<AudioFile>& file);

    /// "dfmt"
    virtual StreamDescription dataFormat() const = 0;
    /// "pcnt": packets of audio when the file was opened.
    virtual std::uint64_t packetCount() const = 0;
    /// "edur": seconds.
    virtual double estimatedDuration() const = 0;
    /// "pkub": no packet has more bytes.
    virtual std::uint32_t packetSizeUpperBound() const = 0;
    /// "mgic": what a decoder needs to know beforehand; empty where there is none.
    virtual std::vector<std::uint8_t> magicCookie() const = 0;
    /// "cmap": which channel is which, one 32-bit number for each; empty where the file doesn't
    /// say.
    virtual std::vector<std::uint8_t> channelLayout() const = 0;

    struct Packets {
        AudioStatus status = 0;
        std::uint32_t bytes = 0;
        std::uint32_t packets = 0;
    };
    /// Reads up to `count` packets from packet `first` on, no more than `room` holds. No packets
    /// and status 0 at the end of the data. Of plain samples there are no descriptions.
    virtual Packets readPackets(std::int64_t first, std::uint32_t count,
                                std::span<std::uint8_t> room) = 0;

    /// What open() calls; for tests. Null for the usual.
    using Opener =
        std::function<AudioStatus(const std::filesystem::path&, std::unique_ptr<AudioFile>&)>;
    static void setOpener(Opener opener);
};

} // namespace deckmate
