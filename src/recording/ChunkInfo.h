// One entry of a recording's chunk index.
#pragma once

#include <cstdint>

namespace deckmate {

struct ChunkInfo {
    std::uint32_t chunkID = 0;   ///< the four identifier bytes, the first one low
    std::uint32_t chunkSize = 0; ///< declared size, without the 8-byte chunk header
    std::uint32_t streamPos = 0; ///< file offset of the chunk body

    bool operator==(const ChunkInfo&) const = default;
};

} // namespace deckmate
