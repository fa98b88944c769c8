// Samples of a file as the floats that sound servers take.
#pragma once

#include "platform/StreamDescription.h"

#include <cstddef>
#include <cstdint>

namespace deckmate {

/// Whether toFloats knows the format: 8 bit unsigned, 16, 24 or 32 bit signed, 32 or 64 bit float.
bool canBecomeFloats(const StreamDescription& format);

/// Turns `samples` samples into floats of full scale 1.0: exactly for up to 24 bits and for 32-bit
/// floats, else the nearest float. Realtime: yes.
void toFloats(const StreamDescription& format, const std::uint8_t* bytes, std::size_t samples,
              float* floats) noexcept;

} // namespace deckmate
