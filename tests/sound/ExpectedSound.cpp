#include "sound/ExpectedSound.h"

#include <algorithm>
#include <cmath>
#include <sstream>

namespace deckmate::test {

namespace {

/// The side's share at a width, by its decibels.
double sideFactor(int angle) {
    if (angle == 0) {
        return 0;
    }
    if (angle == 1) {
        return 0.0039810720F; // as the device's makers print it, a little off the rule
    }
    const long double decibels = angle < 15 ? -48.0L + (angle - 1) * 27.0L / 14 //
                                            : (angle - 120) / 5.0L;
    return static_cast<float>(std::pow(10.0L, decibels / 20));
}

double divisorOf(int gain) {
    return static_cast<double>(
        std::pow(10.0L, static_cast<long double>(static_cast<float>(-gain) / 20.0F)));
}

/// Single precision by rounding a result of double precision, which is the same for one operation.
double single(double value) {
    return static_cast<double>(static_cast<float>(value));
}

/// The value whose lower 24 bits are stored, read again.
double wrapped24(std::int64_t value) {
    const std::int64_t low = ((value % 0x1000000) + 0x1000000) % 0x1000000;
    return static_cast<double>(low >= 0x800000 ? low - 0x1000000 : low) / 8388608.0;
}

double left24(double sample) {
    if (std::abs(sample) > 1.0) {
        return sample > 0 ? 8388607.0 / 8388608.0 : -1.0;
    }
    return wrapped24(static_cast<std::int64_t>(std::trunc(sample * 8388608.0)));
}

double right24(double sample) {
    return wrapped24(static_cast<std::int64_t>(std::trunc(sample * 8388608.0)));
}

} // namespace

void NoiseRecording::fill(std::uint32_t seed) {
    std::mt19937 random(seed);
    samples.resize(frames * channels);
    for (float& sample : samples) {
        // Never quieter than 1/16: what is heard can be told from silence.
        const auto size = static_cast<int>(random() % 7800000) + 524288;
        const int value = random() % 2 == 0 ? size : -size;
        sample = bits == 16 ? static_cast<float>(value / 256) / 32768.0F
                            : static_cast<float>(value) / 8388608.0F;
    }
}

Bytes NoiseRecording::file() const {
    Bytes bytes;
    bytes.reserve(samples.size() * 4);
    for (const float sample : samples) {
        const Bytes stored =
            bits == 32 ? f32(sample)
            : bits == 24
                ? le24(static_cast<std::int32_t>(sample * 8388608.0F))
                : le16(static_cast<std::uint16_t>(static_cast<std::int16_t>(sample * 32768.0F)));
        bytes.insert(bytes.end(), stored.begin(), stored.end());
    }
    const Format format = {.tag = static_cast<std::uint16_t>(bits == 32 ? 3 : 1),
                           .channels = static_cast<std::uint16_t>(channels),
                           .rate = rate,
                           .bits = static_cast<std::uint16_t>(bits)};
    // Of even length, which other readers of files expect.
    return recording(bytes, format,
                     {.history = isRaw ? "A=PCM,F=48000,W=24,M=stereo,T=H8;VERSION=1.00;MSRAW=ON"
                                       : "A=PCM,F=48000,W=24,M=stereo,T=H8;VERSION=1.0;MSRAW=OFF"});
}

std::vector<float> ExpectedSound::play(std::int64_t begin, std::int64_t end,
                                       const std::vector<Turn>& turns) {
    // A tenth of a second, but between 16 and 64 KiB.
    const std::uint32_t frameBytes = recording_.bits / 8 * recording_.channels;
    const std::int64_t bufferFrames =
        std::clamp(recording_.rate * frameBytes / 10, 16384U, 65536U) / frameBytes;
    const auto fileEnd = static_cast<std::int64_t>(recording_.frames);
    std::vector<float> sound;
    for (std::int64_t first = begin; first < end; first += bufferFrames) {
        Turn current;
        for (const Turn& turn : turns) {
            if (turn.packet <= first) {
                current = turn;
            }
        }
        playBuffer(static_cast<std::size_t>(first),
                   static_cast<std::size_t>(std::min(first + bufferFrames, fileEnd)), current,
                   sound);
        angle_ = current.angle;
        gain_ = current.gain;
    }
    return sound;
}

void ExpectedSound::playBuffer(std::size_t begin, std::size_t end, const Turn& turn,
                               std::vector<float>& sound) const {
    const bool isProcessed = recording_.channels == 2 && recording_.bits > 16;
    const double from = divisorOf(gain_);
    const double to = divisorOf(turn.gain);
    const auto ramp = static_cast<double>(std::min<std::size_t>(end - begin, 960));
    int angle = angle_;
    for (std::size_t frame = begin; frame < end; ++frame) {
        double left = recording_.samples[frame * recording_.channels];
        double right = recording_.channels == 2 ? recording_.samples[frame * 2 + 1] : left;
        if (isProcessed) {
            if (recording_.isRaw) {
                angle += (turn.angle > angle ? 1 : 0) - (turn.angle < angle ? 1 : 0);
                const double side = single(right * sideFactor(angle));
                right = single(left - side);
                left = single(left + side);
            }
            const auto k = static_cast<double>(frame - begin);
            const double divisor = single(k < ramp ? from + k * (to - from) / ramp : to);
            left = single(left / divisor);
            right = single(right / divisor);
            if (recording_.bits == 24) {
                left = left24(left);
                right = right24(right);
            }
        }
        sound.push_back(static_cast<float>(left));
        sound.push_back(static_cast<float>(right));
    }
}

std::string differenceOf(const std::vector<float>& heard, const std::vector<float>& expected) {
    const std::size_t common = commonFrames(heard, expected);
    if (heard.size() == expected.size() && common * 2 == heard.size()) {
        return "";
    }
    std::ostringstream text;
    text << heard.size() / 2 << " frames heard, " << expected.size() / 2
         << " expected, alike up to frame " << common;
    if (common * 2 + 1 < std::min(heard.size(), expected.size())) {
        text << std::hexfloat << ", where " << heard[common * 2] << ' ' << heard[common * 2 + 1]
             << " stands instead of " << expected[common * 2] << ' ' << expected[common * 2 + 1];
    }
    return text.str();
}

std::size_t commonFrames(const std::vector<float>& one, const std::vector<float>& other) {
    const std::size_t most = std::min(one.size(), other.size()) / 2;
    std::size_t frame = 0;
    while (frame < most && one[2 * frame] == other[2 * frame] &&
           one[2 * frame + 1] == other[2 * frame + 1]) {
        ++frame;
    }
    return frame;
}

} // namespace deckmate::test
