#include "support/Bytes.h"

#include <bit>

namespace deckmate::test {

namespace {

Bytes littleEndian(std::uint64_t value, int count) {
    Bytes bytes;
    for (int i = 0; i < count; ++i) {
        bytes.push_back(static_cast<std::uint8_t>(value >> (8 * i)));
    }
    return bytes;
}

} // namespace

Bytes operator+(Bytes one, const Bytes& other) {
    one.insert(one.end(), other.begin(), other.end());
    return one;
}

Bytes le16(std::uint32_t value) {
    return littleEndian(value, 2);
}
Bytes le24(std::int32_t value) {
    return littleEndian(static_cast<std::uint32_t>(value), 3);
}
Bytes le32(std::uint32_t value) {
    return littleEndian(value, 4);
}
Bytes le64(std::uint64_t value) {
    return littleEndian(value, 8);
}
Bytes f32(float value) {
    return le32(std::bit_cast<std::uint32_t>(value));
}

Bytes text(std::string_view characters, std::size_t width) {
    Bytes bytes(characters.begin(), characters.end());
    if (width > 0) {
        bytes.resize(width);
    }
    return bytes;
}

Bytes zeros(std::size_t count) {
    return Bytes(count);
}

Bytes pcm24(std::initializer_list<std::int32_t> samples) {
    Bytes bytes;
    for (const std::int32_t sample : samples) {
        bytes = bytes + le24(sample);
    }
    return bytes;
}

Bytes floats(std::initializer_list<float> samples) {
    Bytes bytes;
    for (const float sample : samples) {
        bytes = bytes + f32(sample);
    }
    return bytes;
}

Bytes chunk(std::string_view id, const Bytes& body, std::optional<std::uint32_t> declared) {
    const auto size = static_cast<std::uint32_t>(body.size());
    return text(id) + le32(declared.value_or(size)) + body;
}

Bytes formatBody(const Format& format) {
    const std::uint32_t align = format.bits / 8U * format.channels;
    return le16(format.tag) + le16(format.channels) + le32(format.rate) +
           le32(align * format.rate) + le16(align) + le16(format.bits);
}

Bytes bextBody(const BextTexts& texts) {
    return text(texts.description, 256) + text(texts.originator, 32) + text(texts.reference, 32) +
           text("2026-03-04", 10) + text("05:06:07", 8) + le64(123456) + le16(1) +
           text(texts.umid, 64) + zeros(190) + text(texts.history);
}

Bytes riff(const Bytes& chunks, std::optional<std::uint32_t> declared) {
    const auto size = static_cast<std::uint32_t>(4 + chunks.size());
    return text("RIFF") + le32(declared.value_or(size)) + text("WAVE") + chunks;
}

Bytes recording(const Bytes& samples, const Format& format, const BextTexts& texts) {
    return riff(chunk("bext", bextBody(texts)) + chunk("fmt ", formatBody(format)) +
                chunk("data", samples));
}

Bytes evenRecording(const Bytes& samples, const Format& format) {
    return recording(samples, format,
                     {.history = "A=PCM,F=48000,W=24,M=stereo,T=H8;VERSION=1.00;MSRAW=ON"});
}

std::uint32_t samplesAt(const BextTexts& texts) {
    return static_cast<std::uint32_t>(12 + 8 + 602 + texts.history.size() + 8 + 16 + 8);
}

} // namespace deckmate::test
