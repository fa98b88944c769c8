#include "device/MIDIConnectSequence.h"

#include "ConnectTest.h"

#include <ctime>

namespace deckmate::test {
namespace {

using testing::ElementsAre;

class MIDIConnectSequenceTest : public ConnectTest {};

INSTANTIATE_TEST_SUITE_P(Paths, MIDIConnectSequenceTest, testing::Bool(),
                         [](const auto& path) { return path.param ? "Events" : "Bytes"; });

TEST_P(MIDIConnectSequenceTest, AsksOneThingAfterTheOther) {
    InProcessDevice& device = connect();
    for (std::size_t i = 0; i < replies.size(); ++i) {
        ASSERT_EQ(device.messages.size(), i + 1);
        if (i < requests.size()) {
            EXPECT_EQ(device.messages.back(), requests[i]);
        }
        EXPECT_EQ(completions, 0);
        device.answer(replies[i]);
    }
    EXPECT_EQ(device.messages.size(), 7U);
    EXPECT_EQ(completions, 1);
    EXPECT_FALSE(sequences().isSeqRunning());
}

TEST_P(MIDIConnectSequenceTest, FillsTheRecord) {
    connectAndAnswer(7);
    EXPECT_THAT(info().device_id, ElementsAre(0x52, 0x6E, 0x01, 0x02));
    EXPECT_THAT(info().version, ElementsAre('0', '1', '0', '5'));
    EXPECT_EQ(info().sdExist, 1);
    EXPECT_THAT(info().sdRemaining, ElementsAre(1, 2, 3));
    EXPECT_EQ(info().sdUsedSize, "8.00 MB");
    EXPECT_EQ(info().sdMaxSize, "32.0 GB");
    EXPECT_EQ(info().batteryType, 2);
    EXPECT_EQ(info().autoPowOffType, 3);
}

TEST_P(MIDIConnectSequenceTest, TheIdentityHoldsAVersionThatIsReplacedLater) {
    connectAndAnswer(1);
    EXPECT_THAT(info().version, ElementsAre('1', '2', '3', '4'));
}

TEST_P(MIDIConnectSequenceTest, AnswersMaySplitAnywhere) {
    for (std::size_t size = 1; size < 32; ++size) {
        InProcessDevice& device = connect();
        for (const Bytes& whole : replies) {
            for (std::size_t at = 0; at < whole.size(); at += size) {
                const std::size_t end = std::min(at + size, whole.size());
                device.answer({whole.begin() + static_cast<std::ptrdiff_t>(at),
                               whole.begin() + static_cast<std::ptrdiff_t>(end)});
            }
        }
        EXPECT_EQ(completions, static_cast<int>(size));
        unplug(device);
    }
}

TEST_P(MIDIConnectSequenceTest, RepliesOfOtherLengthsAreIgnored) {
    for (std::size_t step = 0; step < replies.size(); ++step) {
        InProcessDevice& device = connectAndAnswer(step);
        const std::size_t sent = device.messages.size();
        Bytes shorter = replies[step];
        shorter.erase(shorter.end() - 2);
        device.answer(shorter);
        Bytes longer = replies[step];
        longer.insert(longer.end() - 1, 0);
        device.answer(longer);
        EXPECT_EQ(device.messages.size(), sent);
        EXPECT_TRUE(sequences().isSeqRunning());
        device.answer(replies[step]);
        for (std::size_t i = step + 1; i < replies.size(); ++i) {
            device.answer(replies[i]);
        }
        EXPECT_EQ(completions, static_cast<int>(step) + 1);
        unplug(device);
    }
}

TEST_P(MIDIConnectSequenceTest, RepliesToOtherStepsAreIgnored) {
    InProcessDevice& device = connectAndAnswer(2);
    for (const Bytes& other : {reply::identity, reply::applicationStarted, reply::cardState,
                               reply::batteryType, reply::autoPowOff, reply::dateSet}) {
        device.answer(other);
    }
    EXPECT_EQ(device.messages.size(), 3U);
    device.answer(reply::version);
    EXPECT_EQ(device.messages.size(), 4U);
}

TEST_P(MIDIConnectSequenceTest, OnlyTheListedBytesAreChecked) {
    InProcessDevice& device = connect();
    for (Bytes message : replies) {
        message[1] = 0x11;
        message[2] = 0x22;
        message[3] = 0x33;
        device.answer(message);
    }
    EXPECT_EQ(completions, 1);
}

TEST_P(MIDIConnectSequenceTest, ARecorderThatIsSilentIsGivenUpAfterTwoSeconds) {
    InProcessDevice& device = connect();
    loop.advance(2s - 1ns);
    EXPECT_TRUE(sequences().isSeqRunning());
    loop.advance(1ns);
    EXPECT_FALSE(sequences().isSeqRunning());
    EXPECT_EQ(completions, 0);
    EXPECT_EQ(device.messages.size(), 1U); // nothing is repeated
}

TEST_P(MIDIConnectSequenceTest, ItsTimeOutsHaveNames) {
    InProcessDevice& device = connect();
    const std::shared_ptr<MIDISequenceBase> sequence = sequences().current_seq();
    EXPECT_EQ(sequence->timeout_description(), "CONNECT_SEQUENCE_DEVICE_ID_REQ");
    device.answer(reply::identity);
    EXPECT_EQ(sequence->timeout_description(), "CONNECT_SEQUENCE_PC_APP_START_REQ");
}

TEST_P(MIDIConnectSequenceTest, AnAnswerInTimeIsTakenAndALateOneIsNot) {
    InProcessDevice& device = connect();
    loop.advance(1900ms);
    device.answer(reply::identity);
    EXPECT_EQ(device.messages.size(), 2U);
    loop.advance(2100ms);
    device.answer(reply::applicationStarted);
    EXPECT_EQ(device.messages.size(), 2U);
    EXPECT_THAT(info().version, ElementsAre('1', '2', '3', '4')); // what was learnt stays
}

// From the third request on there is no time-out: it has always been so. The next connection waits.
TEST_P(MIDIConnectSequenceTest, LaterSilenceIsWaitedForWithoutEnd) {
    for (std::size_t answered = 2; answered < replies.size(); ++answered) {
        InProcessDevice& device = connectAndAnswer(answered);
        EXPECT_EQ(loop.activeTimers(), 0U);
        loop.advance(1h);
        EXPECT_TRUE(sequences().isSeqRunning());
        unplug(device);

        InProcessDevice& again = connect();
        EXPECT_EQ(again.messages.size(), 0U);
        EXPECT_EQ(sequences().queue().size(), 1U);
        // The sequence before takes the answers that it still waits for.
        for (std::size_t i = answered; i < replies.size(); ++i) {
            again.answer(replies[i]);
        }
        EXPECT_EQ(again.messages.back(), request::identity);
        for (const Bytes& message : replies) {
            again.answer(message);
        }
        EXPECT_FALSE(sequences().isSeqRunning());
        unplug(again);
    }
}

TEST(SizeString, ChoosesUnitAndDigits) {
    EXPECT_EQ(MIDIConnectSequence::buildSizeString(0), "0.00 MB");
    EXPECT_EQ(MIDIConnectSequence::buildSizeString(0x1p23F), "8.00 MB");
    EXPECT_EQ(MIDIConnectSequence::buildSizeString(0x1.4p23F), "10.0 MB");
    EXPECT_EQ(MIDIConnectSequence::buildSizeString(0x1.9p26F), "100 MB");
    EXPECT_EQ(MIDIConnectSequence::buildSizeString(0x1p29F), "512 MB");
    EXPECT_EQ(MIDIConnectSequence::buildSizeString(0x1p30F), "1.00 GB");
    EXPECT_EQ(MIDIConnectSequence::buildSizeString(7.5F * 0x1p30F), "7.50 GB");
    EXPECT_EQ(MIDIConnectSequence::buildSizeString(0x1.4p33F), "10.0 GB");
    EXPECT_EQ(MIDIConnectSequence::buildSizeString(29.8F * 0x1p30F), "29.8 GB");
    EXPECT_EQ(MIDIConnectSequence::buildSizeString(119.1F * 0x1p30F), "119 GB");
    EXPECT_EQ(MIDIConnectSequence::buildSizeString(119.9F * 0x1p30F), "119 GB");
}

// Rounding may show one more digit than the rule that chose them.
TEST(SizeString, IsRoundedAfterTheDigitsWereChosen) {
    EXPECT_EQ(MIDIConnectSequence::buildSizeString(9.999F * 0x1p20F), "10.00 MB");
    EXPECT_EQ(MIDIConnectSequence::buildSizeString(99.99F * 0x1p20F), "100.0 MB");
    EXPECT_EQ(MIDIConnectSequence::buildSizeString(1023.9F * 0x1p20F), "1023 MB");
}

TEST(DateMessage, HoldsPlainNumbers) {
    std::tm time = {};
    time.tm_year = 2026 - 1900;
    time.tm_mon = 2;
    time.tm_mday = 5;
    time.tm_hour = 9;
    time.tm_min = 7;
    time.tm_sec = 2;
    EXPECT_THAT(MIDIConnectSequence::buildDateMessage(time),
                ElementsAre(0xF0, 0x52, 0, 0, 0x31, 0, 0x14, 0x1A, 3, 5, 9, 7, 2, 0xF7));
}

} // namespace
} // namespace deckmate::test
