// Lays out a Broadcast Wave file and saves it.
#pragma once

#include "export/BextChunkInfo.h"
#include "export/OutputBuffer.h"
#include "export/OutputFile.h"
#include "recording/WaveFileReader.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <span>
#include <string_view>

namespace deckmate {

/// A RIFF/WAVE file of a `JUNK`, a version-1 `bext` (EBU Tech 3285), an 18-byte `fmt ` and a `data`
/// chunk. All sizes are 32-bit: bytes that would not fit, and bytes for which there is no memory,
/// are not taken, and then nothing is saved.
///
///     BwfWriter writer(reader.get(), bext, true);
///     writer.Write(bytes, count);
///     writer.FixUpChunkSizes();
///     const bool isSaved = writer.Save2File(path);
///
/// The file is kept in memory until it is saved. With a target set beforehand, samples go there as
/// they come: writing overlaps with the making of the samples, and they take no memory.
///
/// For one thread at a time.
class BwfWriter {
public:
    /// Lays out the header from the reader's format and the `bext` fields, neither of which is used
    /// afterwards; a null reader counts as a header of zeros. 24-bit integer samples, else 32-bit
    /// float.
    BwfWriter(const WaveFileReader* reader, const BextChunkInfo& bext, bool is24bit);

    /// Samples to come are written to the file at `path`, which is opened for the first of them.
    void setTarget(const std::filesystem::path& path, const WriteRules& rules);
    /// Says how many bytes of samples will come. NO when the file could not hold them.
    bool expectSamples(std::uint64_t count);
    void Write(const void* bytes, std::uint32_t count);
    /// Patches the RIFF and the `data` size. To be called once all samples are written.
    void FixUpChunkSizes();
    /// Writes what has not been written yet, in place; whether all of the file was written. With a
    /// target, `path` and the rules are those of the target.
    bool Save2File(const std::filesystem::path& path, const WriteRules& rules = {});
    /// Frees the file; nothing can be written or saved afterwards.
    void dispose();

    /// The file so far, without the samples that went to a target.
    std::span<const std::uint8_t> data() const { return data_.bytes(); }
    /// Bytes of samples so far.
    std::uint32_t dataLength() const { return dataLength_; }
    std::uint32_t dataChunkSizePosition() const { return dataChunkSizePosition_; }

    /// The four character codes of an identifier, the first one low; 0 for any other length.
    static std::uint32_t stringToInt32(std::string_view text);

private:
    bool holds(std::uint64_t count) const;
    std::uint64_t headerSize() const;
    void writeToTarget(std::span<const std::uint8_t> samples);
    void append(const void* bytes, std::size_t count);
    void appendText(std::string_view text, std::size_t width);
    void appendIdentifier(std::string_view identifier);
    template <class Integer>
    void appendInteger(Integer value);

    /// Where samples go, and the file there once the first has come.
    struct Target {
        std::filesystem::path path;
        WriteRules rules;
        std::optional<OutputFile> file;
    };

    OutputBuffer data_;
    std::unique_ptr<Target> target_;
    std::uint64_t expected_ = 0;
    std::uint32_t dataChunkSizePosition_ = 0;
    std::uint32_t dataLength_ = 0;
    bool isComplete_ = true;
};

} // namespace deckmate
