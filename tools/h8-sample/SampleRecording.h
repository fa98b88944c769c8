// Recordings as the ORLO H8 writes them, made from computed sound.
#pragma once

#include "export/OutputBuffer.h"

#include <cstdint>

namespace deckmate::tools {

enum class SampleFormat { pcm16, pcm24, float32 };

struct SampleRecording {
    bool isRaw = true; ///< mid and side marked "MSRAW=ON", else left and right
    SampleFormat format = SampleFormat::pcm24;
    std::uint32_t sampleRate = 48000;
    std::uint64_t frames = 0;
};

/// Whether 32-bit sizes can hold the recording.
bool isWritable(const SampleRecording& recording);

/// Appends the whole file to the empty `file`; NO when memory runs out. In mid stands a voice-like
/// tone in syllables, in side its slow movement from one side to the other and a quiet tone of the
/// room, so that width is heard and seen: mono at angle 0, swinging from left to right above it.
/// The same recording is always the same bytes; its sound repeats every 8 seconds.
bool makeRecording(const SampleRecording& recording, OutputBuffer& file);

} // namespace deckmate::tools
