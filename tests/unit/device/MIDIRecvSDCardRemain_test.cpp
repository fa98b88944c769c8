#include "device/MIDIRecvSDCardRemain.h"

#include "DeviceTest.h"

namespace deckmate::test {
namespace {

class MIDIRecvSDCardRemainTest : public DeviceTest {
protected:
    /// Connects and answers everything.
    InProcessDevice& connectFully() {
        InProcessDevice& device = connect();
        sequences().startConnectSeq([this] { ++completions; });
        for (const Bytes& message :
             {reply::identity, reply::applicationStarted, reply::version, reply::cardState,
              reply::batteryType, reply::autoPowOff, reply::dateSet}) {
            device.answer(message);
        }
        return device;
    }
    static Bytes report(std::uint8_t present, std::uint8_t hours) {
        Bytes message = reply::cardState;
        message[6] = present;
        message[7] = hours;
        return message;
    }

    int completions = 0;
};

TEST_F(MIDIRecvSDCardRemainTest, AReportWhileIdleIsStoredAndTold) {
    InProcessDevice& device = connectFully();
    device.answer(report(1, 9));
    EXPECT_EQ(info().sdRemaining[0], 9);
    EXPECT_EQ(completions, 2);
    EXPECT_EQ(device.messages.size(), 7U); // nothing is sent back
}

TEST_F(MIDIRecvSDCardRemainTest, ACardThatIsTakenOutHasNoSizes) {
    InProcessDevice& device = connectFully();
    device.answer(report(0, 9));
    EXPECT_EQ(info().sdExist, 0);
    EXPECT_EQ(info().sdUsedSize, "-- GB");
    EXPECT_EQ(info().sdMaxSize, "-- GB");
}

TEST_F(MIDIRecvSDCardRemainTest, ListensFromItsStartUntilItIsDisposedOf) {
    MIDIRecvSDCardRemain listener;
    EXPECT_EQ(listener.seq(), 0U);
    EXPECT_TRUE(listener.didCompleted());
    listener.startSequence();
    EXPECT_EQ(listener.seq(), 1U);
    EXPECT_TRUE(listener.didCompleted());
    listener.dispose();
    EXPECT_EQ(listener.seq(), 0U);
    listener.startSequence();
    listener.sequenceTimeOut("");
    EXPECT_EQ(listener.seq(), 0U);
}

TEST_F(MIDIRecvSDCardRemainTest, OtherMessagesAreTakenForNothing) {
    InProcessDevice& device = connectFully();
    Bytes shorter = report(1, 9);
    shorter.erase(shorter.end() - 2);
    device.answer(shorter);
    Bytes other = report(1, 9);
    other[5] = 1;
    device.answer(other);
    EXPECT_EQ(info().sdRemaining[0], 1);
}

TEST_F(MIDIRecvSDCardRemainTest, BeforeTheFirstConnectionNobodyListens) {
    InProcessDevice& device = connect();
    device.answer(report(1, 9));
    EXPECT_EQ(info().sdExist, 0);
}

TEST_F(MIDIRecvSDCardRemainTest, WhileASettingWaitsNobodyListens) {
    InProcessDevice& device = connectFully();
    sequences().startChangeBatteryTypeSeq(1, nullptr);
    device.answer(report(1, 9));
    EXPECT_EQ(info().sdRemaining[0], 1);
    device.answer(reply::batteryTypeSet);
    device.answer(report(1, 9));
    EXPECT_EQ(info().sdRemaining[0], 9);
}

TEST_F(MIDIRecvSDCardRemainTest, ListensOnlyBetweenStartAndDisposal) {
    auto record = std::make_shared<ORLODeviceInfo>();
    MIDIRecvSDCardRemain listener;
    listener.setDeviceInfo(record);
    Bytes message = report(1, 9);
    message.pop_back();
    listener.receivedMidi(message);
    EXPECT_EQ(record->sdExist, 0);
    listener.startSequence();
    EXPECT_TRUE(listener.didCompleted());
    listener.receivedMidi(message);
    EXPECT_EQ(record->sdExist, 1);
    listener.dispose();
    message[6] = 2;
    listener.receivedMidi(message);
    EXPECT_EQ(record->sdExist, 1);
    listener.startSequence();
    listener.sequenceTimeOut("");
    listener.receivedMidi(message);
    EXPECT_EQ(record->sdExist, 1);
}

} // namespace
} // namespace deckmate::test
