#include "SampleRecording.h"

#include "export/BextLayout.h"
#include "recording/LittleEndian.h"
#include "recording/RiffTypes.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <limits>
#include <numbers>
#include <string>
#include <string_view>
#include <type_traits>

namespace deckmate::tools {

namespace {

constexpr double loopSeconds = 8;
// Rates that no recorder has repeat earlier, rather than take gigabytes for one period.
constexpr std::uint64_t longestLoop = std::uint64_t{1} << 24;
constexpr std::uint32_t junkSize = 28;
constexpr std::uint32_t formatSize = 16;

std::uint32_t bytesPerSample(SampleFormat format) {
    switch (format) {
    case SampleFormat::pcm16:
        return 2;
    case SampleFormat::pcm24:
        return 3;
    case SampleFormat::float32:
        break;
    }
    return 4;
}

std::string codingHistory(const SampleRecording& recording) {
    return "A=PCM,F=" + std::to_string(recording.sampleRate) +
           ",W=" + std::to_string(8 * bytesPerSample(recording.format)) +
           ",M=stereo,T=H8;VERSION=1.00;MSRAW=" + (recording.isRaw ? "ON" : "OFF") + ";";
}

void append(std::string& file, std::string_view text) {
    file += text;
}

template <class Integer>
requires std::is_integral_v<Integer>
void append(std::string& file, Integer value) {
    std::array<char, sizeof value> bytes = {};
    std::memcpy(bytes.data(), &value, sizeof value);
    file.append(bytes.data(), bytes.size());
}

std::string bextBody(const SampleRecording& recording) {
    std::string body(bext::fixedSize, '\0');
    const auto set = [&](const bext::Field& field, std::string_view text) {
        body.replace(field.offset, text.size(), text);
    };
    set(bext::Description, "Voice and movement");
    set(bext::Originator, "ORLO H8");
    set(bext::OriginatorReference, "H8SAMPLE");
    set(bext::OriginationDate, "2026-01-01");
    set(bext::OriginationTime, "12:00:00");
    body[bext::Version.offset] = 1;
    body += codingHistory(recording);
    body.resize(body.size() + body.size() % 2, '\0');
    return body;
}

std::string header(const SampleRecording& recording) {
    const std::uint32_t sampleBytes = bytesPerSample(recording.format);
    const auto blockAlign = static_cast<std::uint16_t>(2 * sampleBytes);
    const auto dataSize = static_cast<std::uint32_t>(recording.frames * blockAlign);
    const std::string bext = bextBody(recording);

    std::string chunks;
    append(chunks, "WAVEJUNK");
    append(chunks, junkSize);
    chunks.append(junkSize, '\0');
    append(chunks, "bext");
    append(chunks, static_cast<std::uint32_t>(bext.size()));
    append(chunks, bext);
    append(chunks, "fmt ");
    append(chunks, formatSize);
    append(chunks, recording.format == SampleFormat::float32 ? riff::ieeeFloat : riff::integerPcm);
    append(chunks, std::uint16_t{2});
    append(chunks, recording.sampleRate);
    append(chunks, recording.sampleRate * blockAlign);
    append(chunks, blockAlign);
    append(chunks, static_cast<std::uint16_t>(8 * sampleBytes));
    append(chunks, "data");
    append(chunks, dataSize);

    std::string file("RIFF");
    append(file, static_cast<std::uint32_t>(chunks.size() + dataSize));
    return file + chunks;
}

struct Pair {
    double first;
    double second;
};

/// Every frequency has a whole number of periods in 8 seconds, so that the loop has no seam.
Pair midSideAt(double seconds) {
    const auto tone = [&](double hertz) {
        return std::sin(2 * std::numbers::pi * hertz * seconds);
    };
    // Harmonics weighted as an open vowel's, in two syllables a second.
    const double vowel = 0.40 * tone(140) + 0.30 * tone(280) + 0.35 * tone(700) +
                         0.25 * tone(1120) + 0.08 * tone(2380);
    const double syllables = 0.55 + 0.45 * tone(2);
    const double mid = 0.22 * vowel * syllables;
    const double side = 0.6 * tone(0.25) * mid + 0.03 * tone(523);
    return {mid, side};
}

std::uint8_t* store(SampleFormat format, double sample, std::uint8_t* at) {
    if (format == SampleFormat::pcm16) {
        const auto value = static_cast<std::int16_t>(std::lround(sample * 0x1p15));
        std::memcpy(at, &value, sizeof value);
    } else if (format == SampleFormat::pcm24) {
        store24(at, static_cast<std::int32_t>(std::lround(sample * 0x1p23)));
    } else {
        const auto value = static_cast<float>(sample);
        std::memcpy(at, &value, sizeof value);
    }
    return at + bytesPerSample(format);
}

} // namespace

bool isWritable(const SampleRecording& recording) {
    constexpr std::uint64_t largest = std::numeric_limits<std::uint32_t>::max() - 1024;
    return recording.frames <= largest / (std::uint64_t{2} * bytesPerSample(recording.format));
}

bool makeRecording(const SampleRecording& recording, OutputBuffer& file) {
    const std::string start = header(recording);
    const std::uint64_t blockAlign = std::uint64_t{2} * bytesPerSample(recording.format);
    const std::uint64_t dataSize = recording.frames * blockAlign;
    std::uint8_t* at = file.extend(start.size() + dataSize);
    if (at == nullptr) {
        return false;
    }
    at = std::copy(start.begin(), start.end(), at);

    const auto period = static_cast<std::uint64_t>(loopSeconds * recording.sampleRate);
    const std::uint64_t loop = std::min({recording.frames, period, longestLoop});
    const std::uint8_t* sound = at;
    for (std::uint64_t frame = 0; frame < loop; ++frame) {
        Pair pair = midSideAt(static_cast<double>(frame) / recording.sampleRate);
        if (!recording.isRaw) {
            pair = {pair.first + pair.second, pair.first - pair.second};
        }
        at = store(recording.format, pair.first, at);
        at = store(recording.format, pair.second, at);
    }
    const std::uint64_t loopSize = loop * blockAlign;
    for (std::uint64_t done = loopSize; done < dataSize; done += loopSize) {
        at = std::copy_n(sound, std::min(loopSize, dataSize - done), at);
    }
    return true;
}

} // namespace deckmate::tools
