#include "device/MIDISequenceBase.h"

#include "platform/RunLoop.h"
#include "support/ManualRunLoop.h"

#include <chrono>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace deckmate {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;

class Sequence final : public MIDIStepSequence {
public:
    explicit Sequence(std::vector<std::string>& timeOuts) : timeOuts_(timeOuts) { setSeq(2); }

    void sequenceTimeOut(const std::string& description) override {
        timeOuts_.push_back(description);
        MIDIStepSequence::sequenceTimeOut(description);
    }

private:
    std::vector<std::string>& timeOuts_;
};

class MIDISequenceBaseTest : public testing::Test {
protected:
    ~MIDISequenceBaseTest() override { MIDISequenceBase::cleanTimeOutTimer(); }
    MIDISequenceBaseTest() = default;
    MIDISequenceBaseTest(const MIDISequenceBaseTest&) = delete;
    MIDISequenceBaseTest& operator=(const MIDISequenceBaseTest&) = delete;
    MIDISequenceBaseTest(MIDISequenceBaseTest&&) = delete;
    MIDISequenceBaseTest& operator=(MIDISequenceBaseTest&&) = delete;

    test::ManualRunLoop loop;
    std::vector<std::string> timeOuts;
    std::shared_ptr<Sequence> sequence = std::make_shared<Sequence>(timeOuts);
};

TEST_F(MIDISequenceBaseTest, TimesOutOnceWithItsDescriptionAndIsCompletedThen) {
    sequence->markTimeOutWithDescription("WAITING");
    loop.advance(2s - 1ns);
    EXPECT_THAT(timeOuts, IsEmpty());
    EXPECT_FALSE(sequence->didCompleted());
    loop.advance(1ns);
    EXPECT_THAT(timeOuts, ElementsAre("WAITING"));
    EXPECT_TRUE(sequence->didCompleted());
    loop.advance(10s);
    EXPECT_EQ(timeOuts.size(), 1U);
}

TEST_F(MIDISequenceBaseTest, KeepsTheDescriptionForTheNextTimeOut) {
    sequence->markTimeOut(0.5, "FIRST");
    loop.advance(500ms);
    sequence->markTimeOut();
    loop.advance(2s);
    EXPECT_THAT(timeOuts, ElementsAre("FIRST", "FIRST"));
}

TEST_F(MIDISequenceBaseTest, ThereIsOneTimeOutForAll) {
    const auto other = std::make_shared<Sequence>(timeOuts);
    sequence->markTimeOut(1.0, "FIRST");
    other->markTimeOut(1.0, "SECOND");
    EXPECT_EQ(loop.activeTimers(), 1U);
    loop.advance(5s);
    EXPECT_THAT(timeOuts, ElementsAre("SECOND"));
}

TEST_F(MIDISequenceBaseTest, CleaningDropsItWhosever) {
    sequence->markTimeOut(1.0, "FIRST");
    MIDINOPSequence().dispose();
    EXPECT_EQ(loop.activeTimers(), 0U);
}

TEST_F(MIDISequenceBaseTest, ATimeOutKeepsItsSequenceAlive) {
    sequence->markTimeOut(1.0, "FIRST");
    sequence.reset();
    loop.advance(1s);
    EXPECT_THAT(timeOuts, ElementsAre("FIRST"));
}

TEST_F(MIDISequenceBaseTest, ByItselfItDoesNothingAndIsCompleted) {
    MIDINOPSequence sequenceOfNothing;
    sequenceOfNothing.startSequence();
    sequenceOfNothing.receivedMidi({});
    sequenceOfNothing.sequenceTimeOut("");
    EXPECT_TRUE(sequenceOfNothing.didCompleted());
    EXPECT_EQ(loop.activeTimers(), 0U);
}

TEST_F(MIDISequenceBaseTest, HasAName) {
    sequence->setSEQ_Name("NAME");
    EXPECT_EQ(sequence->SEQ_Name(), "NAME");
}

} // namespace
} // namespace deckmate
