// Any bytes as MIDI 1.0 and as Universal MIDI Packets: the packets don't depend on how the bytes
// are cut, and come back as they are.
#include "platform/UmpTranslation.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <span>
#include <vector>

namespace {

using namespace deckmate;
using Bytes = std::span<const std::uint8_t>;
using Words = std::vector<std::uint32_t>;

void require(bool isTrue) {
    if (!isTrue) {
        std::abort();
    }
}

Words encoded(Bytes bytes, std::size_t piece) {
    UmpEncoder encoder;
    Words words;
    while (!bytes.empty()) {
        const std::size_t size = std::min(piece, bytes.size());
        encoder.encode(bytes.first(size), words);
        bytes = bytes.subspan(size);
    }
    return words;
}

void checkEventPackets(const Words& words) {
    std::size_t total = 0;
    for (const MIDIEventPacket& packet : packEvents(words, 0)) {
        require(packet.wordCount >= 1 && packet.wordCount <= MIDIEventPacket::mostWords);
        require(std::equal(packet.words.begin(), packet.words.begin() + packet.wordCount,
                           words.begin() + static_cast<std::ptrdiff_t>(total)));
        total += packet.wordCount;
    }
    require(total <= words.size() && words.size() - total < 4);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const Bytes bytes(data, size);
    const Words words = encoded(bytes, std::max<std::size_t>(size, 1));
    require(words == encoded(bytes, 1));
    require(words == encoded(bytes, 7));
    checkEventPackets(words);

    // What was put out is MIDI 1.0 without anything left over, so that it says the same once more.
    std::vector<std::uint8_t> again;
    decodeUmp(words, again);
    std::vector<std::uint8_t> twice;
    decodeUmp(encoded(again, std::max<std::size_t>(again.size(), 1)), twice);
    require(again == twice);

    Words raw(size / 4);
    if (!raw.empty()) {
        std::memcpy(raw.data(), data, raw.size() * 4);
        checkEventPackets(raw);
        again.clear();
        decodeUmp(raw, again);
        require(again.size() <= raw.size() * 8);
    }
    return 0;
}
