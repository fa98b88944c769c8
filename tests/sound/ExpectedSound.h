// What a recording has to sound like, worked out frame by frame.
#pragma once

#include "support/Bytes.h"

#include <cstdint>
#include <filesystem>
#include <random>
#include <string>
#include <vector>

namespace deckmate::test {

/// A recording made of noise of all levels, in which no frame is silent.
struct NoiseRecording {
    std::uint32_t rate = 48000;
    std::uint32_t bits = 24; ///< 32 for floats
    std::uint32_t channels = 2;
    bool isRaw = true;
    std::size_t frames = 48000;
    std::vector<float> samples; ///< as floats of full scale 1.0, interleaved

    void fill(std::uint32_t seed);
    Bytes file() const;
};

/// Width and gain, from a packet of the file on.
struct Turn {
    std::int64_t packet = 0; ///< the first of the buffers that it holds for
    int angle = 0;
    int gain = 0;
};

/// What the player makes of the noise, buffer by buffer. Shares no code with the program: integers
/// and double precision instead of its floats.
class ExpectedSound {
public:
    explicit ExpectedSound(const NoiseRecording& recording) : recording_(recording) {}

    /// What the listener gets of the buffers from packet `begin` on that begin before `end`, on two
    /// channels. `turns` are in order.
    std::vector<float> play(std::int64_t begin, std::int64_t end, const std::vector<Turn>& turns);
    /// Likewise, to the end of the file.
    std::vector<float> play(std::int64_t begin, const std::vector<Turn>& turns) {
        return play(begin, static_cast<std::int64_t>(recording_.frames), turns);
    }

private:
    void playBuffer(std::size_t begin, std::size_t end, const Turn& turn,
                    std::vector<float>& sound) const;

    const NoiseRecording& recording_;
    // What the player remembers of the buffer before.
    int angle_ = 0;
    int gain_ = 0;
};

/// The first place where two sounds of two channels differ, in words; empty for none.
std::string differenceOf(const std::vector<float>& heard, const std::vector<float>& expected);

/// How many frames the beginnings of both have in common.
std::size_t commonFrames(const std::vector<float>& one, const std::vector<float>& other);

} // namespace deckmate::test
