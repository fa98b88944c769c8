#include "h8-simulator/Recorder.h"

#include <array>
#include <gtest/gtest.h>

namespace deckmate::tools {
namespace {

const Bytes identityRequest = {0xF0, 0x7E, 0x00, 0x06, 0x01, 0xF7};
const Bytes applicationStart = {0xF0, 0x52, 0x00, 0x00, 0x52, 0xF7};
const Bytes versionRequest = {0xF0, 0x52, 0x00, 0x00, 0x10, 0x01, 0xF7};
const Bytes cardRequest = {0xF0, 0x52, 0x00, 0x00, 0x67, 0x01, 0xF7};
const Bytes batteryRequest = {0xF0, 0x52, 0x00, 0x00, 0x46, 0x01, 0xF7};
const Bytes powerOffRequest = {0xF0, 0x52, 0x00, 0x00, 0x46, 0x02, 0xF7};
const Bytes setClock = {0xF0, 0x52, 0x00, 0x00, 0x31, 0x00, 0x14,
                        0x1A, 0x03, 0x05, 0x09, 0x07, 0x02, 0xF7};
const Bytes setBattery2 = {0xF0, 0x52, 0x00, 0x00, 0x31, 0x01, 0x02, 0xF7};
const Bytes setPowerOff3 = {0xF0, 0x52, 0x00, 0x00, 0x31, 0x02, 0x03, 0xF7};

/// The reply to one whole message; empty for none.
Bytes answerOf(Recorder& recorder, const Bytes& request) {
    const auto received = recorder.receive(request);
    EXPECT_EQ(received.size(), 1U);
    return received.empty() ? Bytes() : received[0].reply;
}

TEST(Recorder, TellsItsIdentityAndVersion) {
    Recorder recorder;
    recorder.state().deviceId = {0x52, 0x6E, 0x00, 0x01};
    recorder.state().version = {'0', '1', '2', '3'};
    EXPECT_EQ(answerOf(recorder, identityRequest),
              (Bytes{0xF0, 0x7E, 0x00, 0x06, 0x02, 0x52, 0x6E, 0x00, 0x01, 0x30, 0x31, 0x32, 0x33,
                     0x00, 0xF7}));
}

TEST(Recorder, AcknowledgesTheApplicationsStart) {
    Recorder recorder;
    EXPECT_EQ(answerOf(recorder, applicationStart),
              (Bytes{0xF0, 0x52, 0x00, 0x00, 0x00, 0x15, 0xF7}));
}

TEST(Recorder, TellsItsVersion) {
    Recorder recorder;
    recorder.state().version = {'A', '2', '3', '4'};
    EXPECT_EQ(answerOf(recorder, versionRequest),
              (Bytes{0xF0, 0x52, 0x00, 0x00, 0x11, 0x01, 0x41, 0x32, 0x33, 0x34, 0xF7}));
}

TEST(Recorder, TellsTheCardsState) {
    Recorder recorder;
    recorder.state().card = 1;
    recorder.state().remaining = {12, 34, 56};
    recorder.state().used = std::uint64_t{8} << 20;       // 4 * 2^21
    recorder.state().capacity = std::uint64_t{119} << 30; // (3 * 128 + 92) * 2^28
    EXPECT_EQ(answerOf(recorder, cardRequest),
              (Bytes{0xF0, 0x52, 0x00, 0x00, 0x67, 0x00, 0x01, 12,   34,   56,   //
                     0x00, 0x00, 0x00, 0x04, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, //
                     0x00, 0x00, 0x00, 0x00, 92,   3,    0x00, 0x00, 0x00, 0x00, 0xF7}));
}

TEST(Recorder, WithoutACardAllOfItsNumbersAreZero) {
    Recorder recorder;
    recorder.state().card = 0;
    Bytes expected(31, 0x00);
    expected[0] = 0xF0;
    expected[1] = 0x52;
    expected[4] = 0x67;
    expected[30] = 0xF7;
    EXPECT_EQ(answerOf(recorder, cardRequest), expected);
}

TEST(Recorder, CardThatComesBackHasItsNumbersAgain) {
    Recorder recorder;
    const Bytes before = recorder.cardReport();
    recorder.state().card = 0;
    recorder.state().card = 1;
    EXPECT_EQ(recorder.cardReport(), before);
}

TEST(Recorder, ReportsUnaskedWhatItAnswers) {
    Recorder recorder;
    EXPECT_EQ(recorder.cardReport(), answerOf(recorder, cardRequest));
}

TEST(Recorder, TellsBatteryType) {
    Recorder recorder;
    recorder.state().battery = 2;
    EXPECT_EQ(answerOf(recorder, batteryRequest),
              (Bytes{0xF0, 0x52, 0x00, 0x00, 0x45, 0x01, 0x02, 0xF7}));
}

TEST(Recorder, TellsAutoPowerOff) {
    Recorder recorder;
    recorder.state().powerOff = 3;
    EXPECT_EQ(answerOf(recorder, powerOffRequest),
              (Bytes{0xF0, 0x52, 0x00, 0x00, 0x45, 0x02, 0x03, 0xF7}));
}

TEST(Recorder, AcknowledgesDateAndTime) {
    Recorder recorder;
    EXPECT_EQ(answerOf(recorder, setClock), (Bytes{0xF0, 0x52, 0x00, 0x00, 0x00, 0x0F, 0xF7}));
}

TEST(Recorder, KeepsDateAndTime) {
    Recorder recorder;
    EXPECT_FALSE(recorder.state().clock);
    answerOf(recorder, setClock);
    EXPECT_EQ(recorder.state().clock, (std::array<std::uint8_t, 7>{20, 26, 3, 5, 9, 7, 2}));
}

TEST(Recorder, AcknowledgesABatteryType) {
    Recorder recorder;
    EXPECT_EQ(answerOf(recorder, setBattery2), (Bytes{0xF0, 0x52, 0x00, 0x00, 0x00, 0x10, 0xF7}));
}

TEST(Recorder, TellsTheBatteryTypeThatWasSet) {
    Recorder recorder;
    answerOf(recorder, setBattery2);
    EXPECT_EQ(answerOf(recorder, batteryRequest),
              (Bytes{0xF0, 0x52, 0x00, 0x00, 0x45, 0x01, 0x02, 0xF7}));
}

TEST(Recorder, AcknowledgesAutoPowerOff) {
    Recorder recorder;
    EXPECT_EQ(answerOf(recorder, setPowerOff3), (Bytes{0xF0, 0x52, 0x00, 0x00, 0x00, 0x11, 0xF7}));
}

TEST(Recorder, TellsTheAutoPowerOffThatWasSet) {
    Recorder recorder;
    answerOf(recorder, setPowerOff3);
    EXPECT_EQ(answerOf(recorder, powerOffRequest),
              (Bytes{0xF0, 0x52, 0x00, 0x00, 0x45, 0x02, 0x03, 0xF7}));
}

TEST(Recorder, SettingOneThingLeavesTheOther) {
    Recorder recorder;
    recorder.state().powerOff = 1;
    answerOf(recorder, setBattery2);
    EXPECT_EQ(recorder.state().powerOff, 1);
}

TEST(Recorder, AnswersRequestsOfOnePieceInTheirOrder) {
    Recorder recorder;
    Bytes both = applicationStart;
    both.insert(both.end(), setBattery2.begin(), setBattery2.end());
    const auto received = recorder.receive(both);
    ASSERT_EQ(received.size(), 2U);
    EXPECT_EQ(received[0].reply, (Bytes{0xF0, 0x52, 0x00, 0x00, 0x00, 0x15, 0xF7}));
    EXPECT_EQ(received[1].reply, (Bytes{0xF0, 0x52, 0x00, 0x00, 0x00, 0x10, 0xF7}));
}

TEST(Recorder, AnswersARequestThatComesInPieces) {
    Recorder recorder;
    EXPECT_TRUE(recorder.receive(ByteView(batteryRequest).first(3)).empty());
    const auto received = recorder.receive(ByteView(batteryRequest).subspan(3));
    ASSERT_EQ(received.size(), 1U);
    EXPECT_EQ(received[0].reply, (Bytes{0xF0, 0x52, 0x00, 0x00, 0x45, 0x01, 0x00, 0xF7}));
}

TEST(Recorder, DoesNotAnswerItsOwnReplies) {
    Recorder recorder;
    for (const Bytes& request : {identityRequest, applicationStart, versionRequest, cardRequest,
                                 batteryRequest, powerOffRequest, setClock}) {
        EXPECT_EQ(answerOf(recorder, answerOf(recorder, request)), Bytes());
    }
}

TEST(Recorder, DoesNotAnswerOtherCodes) {
    Recorder recorder;
    EXPECT_EQ(answerOf(recorder, {0xF0, 0x52, 0x00, 0x00, 0x46, 0x03, 0xF7}), Bytes());
    EXPECT_EQ(answerOf(recorder, {0xF0, 0x52, 0x00, 0x00, 0x31, 0x03, 0x00, 0xF7}), Bytes());
    EXPECT_EQ(answerOf(recorder, {0xF0, 0xF7}), Bytes());
}

TEST(Recorder, TakesNothingFromAMessageOfTheWrongLength) {
    Recorder recorder;
    EXPECT_EQ(answerOf(recorder, {0xF0, 0x52, 0x00, 0x00, 0x31, 0x01, 0x02, 0x00, 0xF7}), Bytes());
    EXPECT_EQ(recorder.state().battery, 0);
}

TEST(Recorder, DoesNotAnswerWhatIsNoMessage) {
    Recorder recorder;
    EXPECT_EQ(answerOf(recorder, {0x90, 0x3C, 0x64}), Bytes());
}

} // namespace
} // namespace deckmate::tools
