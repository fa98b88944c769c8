// What a recorder may send in place of the reply that the connect sequence waits for, or beside it.
#include "ConnectTest.h"

namespace deckmate::test {
namespace {

using testing::ElementsAre;

class ConnectReplies : public ConnectTest {
protected:
    /// Nothing but the right reply leads on from this step, whatever has come before it.
    void expectWaiting(const InProcessDevice& device, std::size_t step) {
        EXPECT_EQ(device.messages.size(), step + 1);
        EXPECT_TRUE(sequences().isSeqRunning());
        EXPECT_EQ(completions, 0);
    }
};

INSTANTIATE_TEST_SUITE_P(Paths, ConnectReplies, testing::Bool(),
                         [](const auto& path) { return path.param ? "Events" : "Bytes"; });

TEST_P(ConnectReplies, EachTwiceAreTakenOnce) {
    InProcessDevice& device = connect();
    for (std::size_t step = 0; step < replies.size(); ++step) {
        expectWaiting(device, step);
        device.answer(replies[step]);
        if (step + 1 < replies.size()) {
            device.answer(replies[step]);
        }
    }
    EXPECT_EQ(device.messages.size(), 7U);
    EXPECT_EQ(completions, 1);
}

TEST_P(ConnectReplies, TheLastOneTwiceIsAMessageWhileIdle) {
    InProcessDevice& device = connectAndAnswer(7);
    device.answer(reply::dateSet);
    EXPECT_EQ(completions, 2);
    EXPECT_EQ(device.messages.size(), 7U);
}

TEST_P(ConnectReplies, OthersInBetweenAreIgnoredAtEachStep) {
    InProcessDevice& device = connect();
    for (std::size_t step = 0; step < replies.size(); ++step) {
        for (const Bytes& other : reply::all()) {
            if (other != replies[step]) {
                device.answer(other);
            }
        }
        for (const Bytes& other :
             {Bytes{0x90, 0x3C, 0x64}, Bytes{0xF8}, Bytes{0xF0, 0xF7}, request::identity}) {
            device.answer(other);
        }
        expectWaiting(device, step);
        device.answer(replies[step]);
    }
    EXPECT_EQ(completions, 1);
}

TEST_P(ConnectReplies, NothingIsLearntFromThoseThatAreIgnored) {
    InProcessDevice& device = connectAndAnswer(2);
    for (const Bytes& other : {reply::cardState, reply::batteryType, reply::autoPowOff}) {
        device.answer(other);
    }
    EXPECT_EQ(info().sdExist, 0);
    EXPECT_EQ(info().batteryType, 0);
    EXPECT_EQ(info().autoPowOffType, 0);
}

TEST_P(ConnectReplies, OneWrongBytePutsThemAside) {
    InProcessDevice& device = connect();
    for (std::size_t step = 0; step < replies.size(); ++step) {
        const std::vector<std::size_t> checked =
            step == 0 ? std::vector<std::size_t>{4} : std::vector<std::size_t>{4, 5};
        for (const std::size_t position : checked) {
            for (int value = 0; value < 128; ++value) {
                Bytes message = replies[step];
                if (value != message[position]) {
                    message[position] = static_cast<std::uint8_t>(value);
                    device.answer(message);
                }
            }
        }
        expectWaiting(device, step);
        device.answer(replies[step]);
    }
    EXPECT_EQ(completions, 1);
}

// Of an identity the byte behind the checked one is data already.
TEST_P(ConnectReplies, TheFifthByteOfAnIdentityMayBeAny) {
    InProcessDevice& device = connect();
    Bytes message = reply::identity;
    message[5] = 0x7F;
    device.answer(message);
    EXPECT_EQ(device.messages.size(), 2U);
    EXPECT_THAT(info().device_id, ElementsAre(0x7F, 0x6E, 0x01, 0x02));
}

TEST_P(ConnectReplies, TheRightBytesOneAsideAreTheWrongOnes) {
    InProcessDevice& device = connect();
    for (std::size_t step = 0; step < replies.size(); ++step) {
        Bytes early = replies[step];
        early.erase(early.begin() + 1);
        early.insert(early.end() - 1, 0);
        device.answer(early);
        Bytes late = replies[step];
        late.erase(late.end() - 2);
        late.insert(late.begin() + 1, 0);
        device.answer(late);
        expectWaiting(device, step);
        device.answer(replies[step]);
    }
    EXPECT_EQ(completions, 1);
}

TEST_P(ConnectReplies, AnIdentityOfAnotherLengthDoesntHoldUpTheTimeOut) {
    InProcessDevice& device = connect();
    Bytes shorter = reply::identity;
    shorter.erase(shorter.end() - 2);
    Bytes longer = reply::identity;
    longer.insert(longer.end() - 1, 0);
    ASSERT_EQ(shorter.size(), 13U + 1U); // F7 isn't counted
    ASSERT_EQ(longer.size(), 15U + 1U);
    loop.advance(1s);
    device.answer(shorter);
    loop.advance(1s - 1ns);
    device.answer(longer);
    expectWaiting(device, 0);
    loop.advance(1ns);
    EXPECT_FALSE(sequences().isSeqRunning());
    device.answer(reply::identity);
    EXPECT_EQ(device.messages.size(), 1U);
    EXPECT_THAT(info().device_id, ElementsAre(0, 0, 0, 0));
    EXPECT_EQ(completions, 0);
}

TEST_P(ConnectReplies, TheSecondQuestionHasTwoSecondsOfItsOwn) {
    InProcessDevice& device = connect();
    loop.advance(2s - 1ns);
    device.answer(reply::identity);
    loop.advance(2s - 1ns);
    device.answer(reply::identity); // no answer to it, and no new time
    expectWaiting(device, 1);
    loop.advance(1ns);
    EXPECT_FALSE(sequences().isSeqRunning());
}

} // namespace
} // namespace deckmate::test
