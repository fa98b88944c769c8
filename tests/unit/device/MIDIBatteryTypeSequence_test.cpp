#include "device/MIDIBatteryTypeSequence.h"

#include "DeviceTest.h"

namespace deckmate::test {
namespace {

using testing::ElementsAre;

class MIDIBatteryTypeSequenceTest : public DeviceTest {
protected:
    InProcessDevice& change(std::uint8_t value) {
        InProcessDevice& device = connect();
        sequences().startChangeBatteryTypeSeq(value, [this] { ++completions; });
        return device;
    }

    int completions = 0;
};

TEST_F(MIDIBatteryTypeSequenceTest, SendsTheValue) {
    for (const int value : {0, 1, 2, 3, 255}) {
        const auto byte = static_cast<std::uint8_t>(value);
        InProcessDevice& device = change(byte);
        EXPECT_THAT(device.messages,
                    ElementsAre(Bytes{0xF0, 0x52, 0x00, 0x00, 0x31, 0x01, byte, 0xF7}));
        device.answer(reply::batteryTypeSet);
        unplug(device);
    }
}

TEST_F(MIDIBatteryTypeSequenceTest, CompletesWhenAcknowledged) {
    InProcessDevice& device = change(2);
    device.answer({0xF0, 0x52, 0x00, 0x33, 0x00, 0x10, 0xF7});
    EXPECT_EQ(completions, 1);
    EXPECT_FALSE(sequences().isSeqRunning());
    EXPECT_EQ(loop.activeTimers(), 0U);
}

TEST_F(MIDIBatteryTypeSequenceTest, IgnoresWhatIsNoAcknowledgement) {
    InProcessDevice& device = change(2);
    for (const Bytes& other : {reply::autoPowOffSet, reply::dateSet, reply::cardState,
                               Bytes{0xF0, 0x52, 0, 0x6E, 0x01, 0x10, 0xF7},
                               Bytes{0xF0, 0x52, 0, 0x6E, 0, 0x10, 0, 0xF7}, Bytes{0xF0, 0xF7}}) {
        device.answer(other);
    }
    EXPECT_TRUE(sequences().isSeqRunning());
    EXPECT_EQ(completions, 0);
    EXPECT_EQ(info().sdExist, 0); // nobody listened to the card report
}

TEST_F(MIDIBatteryTypeSequenceTest, IsGivenUpAfterTwoSecondsWithoutCompletion) {
    change(2);
    loop.advance(2s - 1ns);
    EXPECT_TRUE(sequences().isSeqRunning());
    loop.advance(1ns);
    EXPECT_FALSE(sequences().isSeqRunning());
    EXPECT_EQ(completions, 0);
}

TEST_F(MIDIBatteryTypeSequenceTest, AnUnpluggedRecorderEndsItByTheTimeOut) {
    InProcessDevice& device = change(2);
    unplug(device);
    EXPECT_TRUE(sequences().isSeqRunning());
    loop.advance(2s);
    EXPECT_FALSE(sequences().isSeqRunning());
}

} // namespace
} // namespace deckmate::test
