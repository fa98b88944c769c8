// One buffer of an audio queue.
#pragma once

#include "platform/StreamDescription.h"

#include <cstdint>

namespace deckmate {

/// Belongs to its queue, which owns what the pointers lead to. Filled on the main thread before it
/// is enqueued and not touched until the queue asks for it again.
struct AudioQueueBuffer {
    std::uint32_t capacity = 0;    ///< bytes
    std::uint8_t* bytes = nullptr; ///< the samples
    std::uint32_t byteSize = 0;    ///< how many bytes are valid
    void* userData = nullptr;      ///< the holder's
    std::uint32_t packetDescriptionCapacity = 0;
    PacketDescription* packetDescriptions = nullptr;
    std::uint32_t packetDescriptionCount = 0; ///< also of plain samples: the packets in the buffer
};

} // namespace deckmate
