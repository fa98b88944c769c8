#include "h8-simulator/Faults.h"

#include <chrono>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>

namespace deckmate::tools {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const Bytes startDone = {0xF0, 0x52, 0x00, 0x00, 0x00, 0x15, 0xF7};
const Bytes battery = {0xF0, 0x52, 0x00, 0x00, 0x45, 0x01, 0x02, 0xF7};

/// The bytes of each bundle.
std::vector<Bytes> bytesOf(const std::vector<Bundle>& bundles) {
    std::vector<Bytes> all;
    for (const Bundle& bundle : bundles) {
        all.emplace_back();
        for (const Outgoing& message : bundle) {
            all.back().insert(all.back().end(), message.bytes.begin(), message.bytes.end());
        }
    }
    return all;
}

std::vector<Bytes> replied(Faults& faults, const Bytes& message) {
    return bytesOf(faults.reply(message));
}

Bytes joined(Bytes first, const Bytes& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

TEST(Faults, WithoutAnyRepliesLeaveAsTheyAre) {
    Faults faults;
    EXPECT_THAT(replied(faults, battery), ElementsAre(battery));
}

TEST(Faults, OnlyTheRequestThatWasNamedIsNotAnswered) {
    Faults faults;
    faults.silence(2);
    EXPECT_THAT(replied(faults, startDone), ElementsAre(startDone));
    EXPECT_THAT(replied(faults, battery), IsEmpty());
    EXPECT_THAT(replied(faults, battery), ElementsAre(battery));
}

TEST(Faults, RequestsAreCountedFromTheOrderOn) {
    Faults faults;
    faults.reply(startDone);
    faults.silence(1);
    EXPECT_THAT(replied(faults, battery), IsEmpty());
}

TEST(Faults, SeveralRequestsCanBeNamed) {
    Faults faults;
    faults.silence(1);
    faults.silence(3);
    EXPECT_THAT(replied(faults, battery), IsEmpty());
    EXPECT_THAT(replied(faults, battery), ElementsAre(battery));
    EXPECT_THAT(replied(faults, battery), IsEmpty());
}

TEST(Faults, SilenceOfAllLastsUntilItsEnd) {
    Faults faults;
    faults.silenceAll();
    EXPECT_THAT(replied(faults, battery), IsEmpty());
    EXPECT_THAT(replied(faults, battery), IsEmpty());
    faults.endSilence();
    EXPECT_THAT(replied(faults, battery), ElementsAre(battery));
}

TEST(Faults, EndOfSilenceForgetsTheNamedRequests) {
    Faults faults;
    faults.silence(1);
    faults.endSilence();
    EXPECT_THAT(replied(faults, battery), ElementsAre(battery));
}

TEST(Faults, LongerReplyHasZerosBeforeItsEnd) {
    Faults faults;
    faults.changeLength(1, 2);
    EXPECT_THAT(replied(faults, battery),
                ElementsAre(Bytes{0xF0, 0x52, 0x00, 0x00, 0x45, 0x01, 0x02, 0x00, 0x00, 0xF7}));
}

TEST(Faults, ShorterReplyKeepsItsEnd) {
    Faults faults;
    faults.changeLength(1, -1);
    EXPECT_THAT(replied(faults, battery),
                ElementsAre(Bytes{0xF0, 0x52, 0x00, 0x00, 0x45, 0x01, 0xF7}));
}

TEST(Faults, ShortestReplyIsStartAndEnd) {
    Faults faults;
    faults.changeLength(1, -1000);
    EXPECT_THAT(replied(faults, battery), ElementsAre(Bytes{0xF0, 0xF7}));
}

TEST(Faults, OtherRepliesKeepTheirLength) {
    Faults faults;
    faults.changeLength(2, 1);
    EXPECT_THAT(replied(faults, battery), ElementsAre(battery));
    faults.reply(battery);
    EXPECT_THAT(replied(faults, battery), ElementsAre(battery));
}

TEST(Faults, MeaningTellsOfTheChangedLength) {
    Faults faults;
    faults.changeLength(1, -1);
    EXPECT_EQ(faults.reply(battery)[0][0].meaning, "battery type: 2, 1 byte shorter");
}

TEST(Faults, TwiceSendsTheReplyTwoTimes) {
    Faults faults;
    faults.setTwice(true);
    EXPECT_THAT(replied(faults, battery), ElementsAre(battery, battery));
}

TEST(Faults, TwiceDoesNotConcernReports) {
    Faults faults;
    faults.setTwice(true);
    EXPECT_EQ(faults.report(battery).size(), 1U);
}

TEST(Faults, MergingSendsEachReplyWithTheNext) {
    Faults faults;
    faults.setMerging(true);
    EXPECT_THAT(replied(faults, startDone), IsEmpty());
    EXPECT_THAT(replied(faults, battery), ElementsAre(joined(startDone, battery)));
    EXPECT_THAT(replied(faults, startDone), IsEmpty());
}

TEST(Faults, MergingSendsAReplyWithAReport) {
    Faults faults;
    faults.setMerging(true);
    faults.reply(startDone);
    EXPECT_THAT(bytesOf({faults.report(battery)}), ElementsAre(joined(startDone, battery)));
}

TEST(Faults, MergingDoesNotHoldReports) {
    Faults faults;
    faults.setMerging(true);
    EXPECT_THAT(bytesOf({faults.report(battery)}), ElementsAre(battery));
    EXPECT_FALSE(faults.isHolding());
}

TEST(Faults, TwiceAndMergedMakesOnePieceOfOneReply) {
    Faults faults;
    faults.setTwice(true);
    faults.setMerging(true);
    EXPECT_THAT(replied(faults, battery), ElementsAre(joined(battery, battery)));
}

TEST(Faults, EndOfMergingGivesWhatWaits) {
    Faults faults;
    faults.setMerging(true);
    faults.reply(battery);
    const std::optional<Bundle> waiting = faults.setMerging(false);
    ASSERT_TRUE(waiting);
    EXPECT_THAT(bytesOf({*waiting}), ElementsAre(battery));
    EXPECT_FALSE(faults.isHolding());
}

TEST(Faults, EndOfMergingGivesNothingWhereNothingWaits) {
    Faults faults;
    faults.setMerging(true);
    EXPECT_FALSE(faults.setMerging(false));
}

TEST(Faults, SilentRequestDoesNotWait) {
    Faults faults;
    faults.setMerging(true);
    faults.silence(1);
    faults.reply(battery);
    EXPECT_FALSE(faults.isHolding());
}

TEST(Faults, PiecesHaveTheSizeAndTheRest) {
    Faults faults;
    faults.setPieceSize(3);
    EXPECT_THAT(faults.piecesOf(battery),
                ElementsAre(Bytes{0xF0, 0x52, 0x00}, Bytes{0x00, 0x45, 0x01}, Bytes{0x02, 0xF7}));
}

TEST(Faults, WithoutAPieceSizeThereIsOnePiece) {
    Faults faults;
    faults.setPieceSize(3);
    faults.setPieceSize(0);
    EXPECT_THAT(faults.piecesOf(battery), ElementsAre(battery));
}

TEST(Faults, DescriptionIsInTheCommandsWords) {
    Faults faults;
    faults.reply(battery);
    faults.silenceAll();
    faults.silence(2);
    faults.changeLength(3, -1);
    faults.setTwice(true);
    faults.setMerging(true);
    faults.setPieceSize(4);
    faults.setDelay(std::chrono::milliseconds(50));
    EXPECT_EQ(faults.description(),
              "silent all, silent 2, length 3 -1, twice, merge, split 4, delay 50");
}

TEST(Faults, ResetEndsAllOfThem) {
    Faults faults;
    faults.silenceAll();
    faults.changeLength(1, 1);
    faults.setTwice(true);
    faults.setPieceSize(4);
    faults.setDelay(std::chrono::milliseconds(50));
    faults.reset();
    EXPECT_EQ(faults.description(), "none");
}

TEST(Faults, ResetGivesWhatWaits) {
    Faults faults;
    faults.setMerging(true);
    faults.reply(battery);
    EXPECT_TRUE(faults.reset());
    EXPECT_FALSE(faults.isHolding());
}

TEST(Faults, ResetGoesOnCounting) {
    Faults faults;
    faults.reply(battery);
    faults.reset();
    EXPECT_EQ(faults.requests(), 1U);
}

} // namespace
} // namespace deckmate::tools
