// Files written out byte by byte, independently of the code that reads and writes them.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string_view>
#include <vector>

namespace deckmate::test {

using Bytes = std::vector<std::uint8_t>;

Bytes operator+(Bytes one, const Bytes& other);

Bytes le16(std::uint32_t value);
Bytes le24(std::int32_t value);
Bytes le32(std::uint32_t value);
Bytes le64(std::uint64_t value);
Bytes f32(float value);
/// The characters, padded with zero bytes to `width`, if given.
Bytes text(std::string_view characters, std::size_t width = 0);
Bytes zeros(std::size_t count);

/// 24-bit samples in a row.
Bytes pcm24(std::initializer_list<std::int32_t> samples);
Bytes floats(std::initializer_list<float> samples);

/// Identifier, size (the real one unless another is declared) and body; no pad byte.
Bytes chunk(std::string_view id, const Bytes& body, std::optional<std::uint32_t> declared = {});

struct Format {
    std::uint16_t tag = 1;
    std::uint16_t channels = 2;
    std::uint32_t rate = 48000;
    std::uint16_t bits = 24;
};
/// The 16 bytes of a `fmt ` body.
Bytes formatBody(const Format& format);

struct BextTexts {
    std::string_view description{};
    std::string_view originator = "ORLO H8";
    std::string_view reference{};
    std::string_view umid{};
    std::string_view history = "A=PCM,F=48000,W=24,M=stereo,T=H8;VERSION=1.00;MSRAW=ON;";
};
/// The 602 fixed bytes and the coding history.
Bytes bextBody(const BextTexts& texts);

/// "RIFF", the size (the real one unless another is declared), "WAVE" and the chunks.
Bytes riff(const Bytes& chunks, std::optional<std::uint32_t> declared = {});

/// A whole recording: `bext`, `fmt ` and `data` chunk.
Bytes recording(const Bytes& samples, const Format& format = {}, const BextTexts& texts = {});
/// A recording that other readers open too: they expect chunks of odd sizes to be padded, and this
/// one has none before the samples.
Bytes evenRecording(const Bytes& samples, const Format& format = {});
/// Where the samples of such a recording begin, given the history's length.
std::uint32_t samplesAt(const BextTexts& texts = {});

inline constexpr std::string_view plainHistory =
    "A=PCM,F=48000,W=24,M=stereo,T=H8;VERSION=1.00;MSRAW=OFF";

} // namespace deckmate::test
