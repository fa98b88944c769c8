#include "device/MIDISettingSequence.h"

#include "DeviceTest.h"

#include <string>

namespace deckmate::test {
namespace {

using testing::ElementsAre;

struct Setting {
    std::string name;
    void (MIDISequenceManager::*start)(std::uint8_t value, std::function<void()> onComplete);
    std::uint8_t code;
    std::uint8_t acknowledgement;
    std::string timeOut;
};

void PrintTo(const Setting& setting, std::ostream* out) {
    *out << setting.name;
}

class MIDISettingSequenceTest : public DeviceTest, public testing::WithParamInterface<Setting> {
protected:
    InProcessDevice& change(std::uint8_t value) {
        InProcessDevice& device = connect();
        (sequences().*setting.start)(value, [this] { ++completions; });
        return device;
    }
    /// The acknowledgement as far as it is checked.
    Bytes acknowledgement() const {
        return {0xF0, 0x52, 0, 0x33, 0, setting.acknowledgement, 0xF7};
    }

    const Setting setting = GetParam();
    int completions = 0;
};

INSTANTIATE_TEST_SUITE_P(
    Settings, MIDISettingSequenceTest,
    testing::Values(Setting{"BatteryType", &MIDISequenceManager::startChangeBatteryTypeSeq, 0x01,
                            0x10, "CONTROL_SEQUENCE_BT_CHG_REQ"},
                    Setting{"AutoPowOff", &MIDISequenceManager::startChangeAutoPowOffSeq, 0x02,
                            0x11, "CONTROL_SEQUENCE_APO_CHG_REQ"}),
    [](const auto& setting) { return setting.param.name; });

TEST_P(MIDISettingSequenceTest, SendsTheValue) {
    for (const int value : {0, 1, 2, 3, 255}) {
        const auto byte = static_cast<std::uint8_t>(value);
        InProcessDevice& device = change(byte);
        EXPECT_THAT(device.messages,
                    ElementsAre(Bytes{0xF0, 0x52, 0x00, 0x00, 0x31, setting.code, byte, 0xF7}));
        device.answer(acknowledgement());
        unplug(device);
    }
}

TEST_P(MIDISettingSequenceTest, CompletesWhenAcknowledged) {
    InProcessDevice& device = change(2);
    device.answer(acknowledgement());
    EXPECT_EQ(completions, 1);
    EXPECT_FALSE(sequences().isSeqRunning());
    EXPECT_EQ(loop.activeTimers(), 0U);
}

TEST_P(MIDISettingSequenceTest, IgnoresWhatIsNoAcknowledgement) {
    InProcessDevice& device = change(2);
    Bytes ofTheOther = acknowledgement();
    ofTheOther[5] ^= 1;
    Bytes failed = acknowledgement();
    failed[4] = 1;
    Bytes longer = acknowledgement();
    longer.insert(longer.end() - 1, 0);
    for (const Bytes& other :
         {ofTheOther, failed, longer, reply::dateSet, reply::cardState, Bytes{0xF0, 0xF7}}) {
        device.answer(other);
    }
    EXPECT_TRUE(sequences().isSeqRunning());
    EXPECT_EQ(completions, 0);
    EXPECT_EQ(info().sdExist, 0); // nobody listened to the card report
}

TEST_P(MIDISettingSequenceTest, IsGivenUpAfterTwoSecondsWithoutCompletion) {
    change(2);
    loop.advance(2s - 1ns);
    EXPECT_TRUE(sequences().isSeqRunning());
    loop.advance(1ns);
    EXPECT_FALSE(sequences().isSeqRunning());
    EXPECT_EQ(completions, 0);
}

TEST_P(MIDISettingSequenceTest, ItsTimeOutHasAName) {
    change(2);
    EXPECT_EQ(sequences().current_seq()->timeout_description(), setting.timeOut);
}

TEST_P(MIDISettingSequenceTest, AnUnpluggedRecorderEndsItByTheTimeOut) {
    InProcessDevice& device = change(2);
    unplug(device);
    EXPECT_TRUE(sequences().isSeqRunning());
    loop.advance(2s);
    EXPECT_FALSE(sequences().isSeqRunning());
}

} // namespace
} // namespace deckmate::test
