// Samples of a file as the floats that sound servers take.
#pragma once

#include "platform/StreamDescription.h"

#include <cstddef>
#include <cstdint>

namespace deckmate {

/// Bytes from one sample to the next; 0 where there are no samples.
std::uint32_t sampleBytes(const StreamDescription& format);

/// Whether toFloats knows the format: up to 8 bits unsigned, up to 32 bits signed, 32- or 64-bit
/// floats, each in as few whole bytes as can hold it. Fewer bits than a whole number of bytes are
/// the upper ones.
bool canBecomeFloats(const StreamDescription& format);

/// Turns `samples` samples into floats of full scale 1.0: exactly for up to 24 bits and for 32-bit
/// floats, else the nearest float. Realtime: yes.
void toFloats(const StreamDescription& format, const std::uint8_t* bytes, std::size_t samples,
              float* floats) noexcept;

} // namespace deckmate
