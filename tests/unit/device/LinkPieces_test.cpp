// Messages of the lengths at which packets are cut, in pieces of all kinds, both ways.
#include "DeviceTest.h"

#include "platform/UmpTranslation.h"

namespace deckmate::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// So many bytes from F0 to F7, each of which differs from its neighbours.
Bytes messageOf(std::size_t size) {
    Bytes message = {0xF0};
    while (message.size() + 1 < size) {
        message.push_back(static_cast<std::uint8_t>(message.size() % 127));
    }
    message.push_back(0xF7);
    return message;
}

/// As it is received: without its end.
Bytes counted(Bytes message) {
    message.pop_back();
    return message;
}

class LinkPieces : public DeviceTest, public testing::WithParamInterface<bool> {
protected:
    LinkPieces() : DeviceTest(GetParam()) {
        loop.runPending();
        loop.advance(1s);
        sequences().exeCommand({}, [this](std::span<const std::uint8_t> message) {
            received.emplace_back(message.begin(), message.end());
            return false;
        });
        device.packets.clear();
        device.sends = 0;
    }

    /// Sends a message in pieces of so many bytes.
    void answerInPieces(const Bytes& message, std::size_t size) {
        for (std::size_t at = 0; at < message.size(); at += size) {
            const auto begin = message.begin() + static_cast<std::ptrdiff_t>(at);
            const std::size_t left = std::min(size, message.size() - at);
            device.answer({begin, begin + static_cast<std::ptrdiff_t>(left)});
        }
    }
    std::vector<std::size_t> packetSizes() const {
        std::vector<std::size_t> sizes;
        for (const Bytes& packet : device.packets) {
            sizes.push_back(packet.size());
        }
        return sizes;
    }

    std::vector<Bytes> received; ///< complete messages
    InProcessDevice& device = midi.addDevice("H8 ORLO MIDI 1");
};

class LinkPiecesOfBytes : public LinkPieces {};
class LinkPiecesOfEvents : public LinkPieces {};

INSTANTIATE_TEST_SUITE_P(Paths, LinkPieces, testing::Bool(),
                         [](const auto& path) { return path.param ? "Events" : "Bytes"; });
INSTANTIATE_TEST_SUITE_P(Path, LinkPiecesOfBytes, testing::Values(false));
INSTANTIATE_TEST_SUITE_P(Path, LinkPiecesOfEvents, testing::Values(true));

// ---- To the recorder

TEST_P(LinkPieces, MessagesOfAnyLengthAreSentWhole) {
    std::vector<Bytes> all;
    for (const std::size_t size : {3U, 8U, 9U, 255U, 256U, 257U, 512U, 513U, 1000U}) {
        manager().send(messageOf(size));
        all.push_back(messageOf(size));
    }
    EXPECT_EQ(device.messages, all);
}

TEST_P(LinkPiecesOfBytes, APacketOfAListHolds256Bytes) {
    manager().send(messageOf(255));
    manager().send(messageOf(256));
    EXPECT_THAT(packetSizes(), ElementsAre(255U, 256U));
    manager().send(messageOf(257));
    EXPECT_THAT(packetSizes(), ElementsAre(255U, 256U, 256U, 1U));
    EXPECT_EQ(device.sends, 3U);
}

TEST_P(LinkPiecesOfBytes, TwoFullPacketsAreFollowedByNoEmptyOne) {
    manager().send(messageOf(512));
    EXPECT_THAT(packetSizes(), ElementsAre(256U, 256U));
    EXPECT_EQ(device.sends, 1U);
}

TEST_P(LinkPiecesOfEvents, EachSixBytesBetweenTheEndsAreSentByThemselves) {
    manager().send(messageOf(254)); // 42 * 6 and the two ends
    EXPECT_EQ(device.sends, 42U);
    for (const std::size_t size : {255U, 256U, 257U, 260U}) {
        device.sends = 0;
        manager().send(messageOf(size));
        EXPECT_EQ(device.sends, 43U) << size;
    }
}

TEST_P(LinkPiecesOfBytes, AMessageOfNothingIsSentAsItIs) {
    manager().send(Bytes{0xF0, 0xF7});
    EXPECT_THAT(device.packets, ElementsAre(Bytes{0xF0, 0xF7}));
}

TEST_P(LinkPiecesOfEvents, AMessageOfNothingIsNotSent) {
    manager().send(Bytes{0xF0, 0xF7});
    EXPECT_EQ(device.sends, 0U);
}

// ---- From the recorder

TEST_P(LinkPieces, MessagesOfAnyLengthAreReceivedWhole) {
    std::vector<Bytes> all;
    for (const std::size_t size : {3U, 8U, 9U, 255U, 256U, 257U, 512U, 513U, 1000U}) {
        device.answer(messageOf(size));
        all.push_back(counted(messageOf(size)));
    }
    EXPECT_EQ(received, all);
}

TEST_P(LinkPieces, PiecesOfAnySizeAreOneMessage) {
    const Bytes message = messageOf(1000);
    for (const std::size_t size : {1U, 3U, 6U, 7U, 255U, 256U, 257U, 999U}) {
        received.clear();
        answerInPieces(message, size);
        EXPECT_THAT(received, ElementsAre(counted(message))) << size;
    }
}

TEST_P(LinkPieces, AMessageOfNothingIsReceivedAsItsBeginning) {
    device.answer({0xF0, 0xF7});
    EXPECT_THAT(received, ElementsAre(Bytes{0xF0}));
}

TEST_P(LinkPiecesOfBytes, ALoneEndIsReceivedAsAMessageOfNothing) {
    device.answer({0xF7});
    EXPECT_THAT(received, ElementsAre(Bytes{0xF0}));
}

TEST_P(LinkPiecesOfEvents, ALoneEndIsNotReceived) {
    device.answer({0xF7});
    EXPECT_THAT(received, IsEmpty());
}

TEST_P(LinkPiecesOfBytes, PacketsOfAListAreOneMessage) {
    const Bytes message = messageOf(514);
    const auto at = [&](std::ptrdiff_t index) { return message.begin() + index; };
    device.answerPackets({{at(0), at(255)}, {at(255), at(511)}, {}, {at(511), at(514)}});
    EXPECT_THAT(received, ElementsAre(counted(message)));
}

TEST_P(LinkPiecesOfEvents, WordsMayBeSpreadOverPacketsAndListsInAnyWay) {
    const Bytes message = messageOf(200); // 33 packets of two words
    std::vector<std::uint32_t> words;
    UmpEncoder().encode(message, words);
    ASSERT_EQ(words.size(), 66U);
    for (std::size_t perPacket = 2; perPacket <= 64; perPacket += 2) {
        std::vector<InProcessDevice::Words> packets;
        for (std::size_t at = 0; at < words.size(); at += perPacket) {
            const auto begin = words.begin() + static_cast<std::ptrdiff_t>(at);
            const std::size_t left = std::min(perPacket, words.size() - at);
            packets.emplace_back(begin, begin + static_cast<std::ptrdiff_t>(left));
        }
        received.clear();
        device.answerEvents(packets);
        for (const InProcessDevice::Words& packet : packets) {
            device.answerEvents({packet});
        }
        EXPECT_THAT(received, ElementsAre(counted(message), counted(message))) << perPacket;
    }
}

// Which has no place of its own there.
TEST_P(LinkPiecesOfBytes, ARealTimeByteInsideAMessageBecomesPartOfIt) {
    device.answer({0xF0, 1, 0xF8, 2, 0xF7});
    device.answer({0xF0, 1});
    device.answer({0xFE});
    device.answer({2, 0xF7});
    EXPECT_THAT(received, ElementsAre(Bytes{0xF0, 1, 0xF8, 2}, Bytes{0xF0, 1, 0xFE, 2}));
}

TEST_P(LinkPiecesOfEvents, ARealTimeByteComesBeforeAMessageOfOnePacket) {
    device.answer({0xF0, 1, 2});
    device.answer({0xF8});
    device.answer({3, 0xF7});
    EXPECT_THAT(received, ElementsAre(Bytes{0xF0, 0xF8}, Bytes{0xF0, 1, 2, 3}));
}

// There is one buffer for all. A recorder sends no real time.
TEST_P(LinkPiecesOfEvents, ARealTimeByteInsideALongerMessageTakesThePlaceOfItsBeginning) {
    device.answer({0xF0, 1, 2, 3, 4, 5, 6, 7});
    device.answer({0xF8});
    device.answer({8, 0xF7});
    EXPECT_THAT(received, ElementsAre(Bytes{0xF0, 0xF8}, Bytes{0xF0, 0xF8, 7, 8}));
}

TEST_P(LinkPieces, ShortMessagesBetweenLongOnesLeaveThemWhole) {
    std::vector<Bytes> expected = {counted(messageOf(300)), counted(messageOf(20))};
    if (GetParam()) { // bytes wait for an end, which never comes
        expected.insert(expected.begin() + 1, Bytes{0xF0, 0xE0, 0x01, 0x02});
    }
    device.answer(messageOf(300));
    device.answer({0xE0, 0x01, 0x02});
    device.answer(messageOf(20));
    EXPECT_EQ(received, expected);
}

} // namespace
} // namespace deckmate::test
