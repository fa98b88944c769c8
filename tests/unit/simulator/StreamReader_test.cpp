#include "h8-simulator/StreamReader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <ostream>

namespace deckmate::tools {

bool operator==(const StreamReader::Item& a, const StreamReader::Item& b) {
    return a.bytes == b.bytes && a.isMessage == b.isMessage;
}

std::ostream& operator<<(std::ostream& out, const StreamReader::Item& item) {
    return out << hexOf(item.bytes) << (item.isMessage ? "" : " (no message)");
}

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const Bytes identityRequest = {0xF0, 0x7E, 0x00, 0x06, 0x01, 0xF7};
const Bytes batteryRequest = {0xF0, 0x52, 0x00, 0x00, 0x46, 0x01, 0xF7};

StreamReader::Item message(const Bytes& bytes) {
    return {bytes, true};
}

StreamReader::Item stray(const Bytes& bytes) {
    return {bytes, false};
}

TEST(StreamReader, MessageInOnePiece) {
    StreamReader reader;
    EXPECT_THAT(reader.read(identityRequest), ElementsAre(message(identityRequest)));
}

TEST(StreamReader, MessageCutAtEveryByte) {
    StreamReader reader;
    for (std::size_t i = 0; i + 1 < identityRequest.size(); ++i) {
        EXPECT_THAT(reader.read({&identityRequest[i], 1}), IsEmpty());
    }
    EXPECT_THAT(reader.read({&identityRequest.back(), 1}), ElementsAre(message(identityRequest)));
}

TEST(StreamReader, TwoMessagesInOnePiece) {
    StreamReader reader;
    Bytes both = identityRequest;
    both.insert(both.end(), batteryRequest.begin(), batteryRequest.end());
    EXPECT_THAT(reader.read(both), ElementsAre(message(identityRequest), message(batteryRequest)));
}

TEST(StreamReader, NoBytesGiveNothing) {
    StreamReader reader;
    EXPECT_THAT(reader.read({}), IsEmpty());
}

TEST(StreamReader, RealTimeBytesInsideAreLeftOut) {
    StreamReader reader;
    const Bytes bytes = {0xF0, 0xF8, 0x7E, 0x00, 0xFE, 0x06, 0x01, 0xFF, 0xF7};
    EXPECT_THAT(reader.read(bytes), ElementsAre(message(identityRequest)));
}

TEST(StreamReader, RealTimeBytesAloneGiveNothing) {
    StreamReader reader;
    EXPECT_THAT(reader.read(Bytes{0xF8, 0xFE}), IsEmpty());
}

TEST(StreamReader, NewStartDropsTheUnfinishedMessage) {
    StreamReader reader;
    Bytes bytes = {0xF0, 0x52, 0x00};
    bytes.insert(bytes.end(), identityRequest.begin(), identityRequest.end());
    EXPECT_THAT(reader.read(bytes),
                ElementsAre(stray({0xF0, 0x52, 0x00}), message(identityRequest)));
}

TEST(StreamReader, ChannelMessageEndsTheUnfinishedMessage) {
    StreamReader reader;
    EXPECT_THAT(reader.read(Bytes{0xF0, 0x52, 0x90, 0x3C, 0x64, 0xF7}),
                ElementsAre(stray({0xF0, 0x52}), stray({0x90, 0x3C, 0x64}), stray({0xF7})));
}

TEST(StreamReader, LostStartIsNoMessage) {
    StreamReader reader;
    EXPECT_THAT(reader.read(Bytes{0x52, 0x00, 0xF7}),
                ElementsAre(stray({0x52, 0x00}), stray({0xF7})));
}

TEST(StreamReader, EmptyMessageIsAMessage) {
    StreamReader reader;
    EXPECT_THAT(reader.read(Bytes{0xF0, 0xF7}), ElementsAre(message({0xF0, 0xF7})));
}

TEST(StreamReader, LongestMessageIsStillOne) {
    StreamReader reader;
    Bytes bytes(StreamReader::longest, 0x01);
    bytes.front() = 0xF0;
    bytes.back() = 0xF7;
    EXPECT_THAT(reader.read(bytes), ElementsAre(message(bytes)));
}

TEST(StreamReader, LongerMessageIsGivenUpAndTheNextOneIsGood) {
    StreamReader reader;
    Bytes bytes(StreamReader::longest, 0x01);
    bytes.front() = 0xF0;
    EXPECT_THAT(reader.read(bytes), ElementsAre(stray(bytes)));
    EXPECT_THAT(reader.read(Bytes{0x02, 0xF7}), ElementsAre(stray({0x02}), stray({0xF7})));
    EXPECT_THAT(reader.read(identityRequest), ElementsAre(message(identityRequest)));
}

} // namespace
} // namespace deckmate::tools
