// Finds the System Exclusive messages in a stream of MIDI 1.0 bytes.
#pragma once

#include "h8-simulator/Protocol.h"

#include <cstddef>
#include <vector>

namespace deckmate::tools {

class StreamReader {
public:
    /// A computer's requests are short: what is longer is no message of the protocol.
    static constexpr std::size_t longest = 1024;

    struct Item {
        Bytes bytes;
        bool isMessage =
            false; ///< from F0 to F7, else what is none, like a message without its end
    };

    /// The items that end in these bytes. Pieces may be of any size and begin anywhere; real-time
    /// bytes (F8 to FF) are left out wherever they are. Of a message beyond `longest` the first
    /// bytes are an item that is no message.
    std::vector<Item> read(ByteView bytes);

private:
    void take(std::uint8_t byte, std::vector<Item>& items);
    void close(bool isMessage, std::vector<Item>& items);

    Bytes current_;
    bool isInMessage_ = false;
};

} // namespace deckmate::tools
