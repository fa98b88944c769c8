// The recorder's clock is set to the local time of the moment, whatever time zone that is.
#include "ConnectTest.h"

#include <cstdlib>
#include <ctime>
#include <optional>

namespace deckmate::test {
namespace {

/// The zone of this process; the one before comes back in the end.
class TimeZone {
public:
    explicit TimeZone(const std::string& name) {
        if (const char* const before = std::getenv("TZ")) {
            before_ = before;
        }
        set(name);
    }
    ~TimeZone() {
        if (before_) {
            set(*before_);
        } else {
            unsetenv("TZ");
        }
        tzset();
    }
    TimeZone(const TimeZone&) = delete;
    TimeZone& operator=(const TimeZone&) = delete;
    TimeZone(TimeZone&&) = delete;
    TimeZone& operator=(TimeZone&&) = delete;

    /// Without telling the library, as when another program changes the zone.
    static void set(const std::string& name) { setenv("TZ", name.c_str(), 1); }

private:
    std::optional<std::string> before_;
};

class ConnectClock : public ConnectTest {
protected:
    /// Answers the question before, and gives the time that is told then, as if it were UTC.
    static std::time_t timeTold(InProcessDevice& device) {
        device.answer(reply::autoPowOff);
        const Bytes message = device.messages.back();
        EXPECT_EQ(message.size(), 14U);
        std::tm told = {};
        told.tm_year = message[6] * 100 + message[7] - 1900;
        told.tm_mon = message[8] - 1;
        told.tm_mday = message[9];
        told.tm_hour = message[10];
        told.tm_min = message[11];
        told.tm_sec = message[12];
        return timegm(&told);
    }
    /// So many seconds ahead of UTC.
    static void expectAhead(InProcessDevice& device, std::time_t seconds) {
        const std::time_t before = std::time(nullptr);
        const std::time_t told = timeTold(device);
        const std::time_t after = std::time(nullptr);
        EXPECT_GE(told, before + seconds);
        EXPECT_LE(told, after + seconds);
    }
};

INSTANTIATE_TEST_SUITE_P(Paths, ConnectClock, testing::Bool(),
                         [](const auto& path) { return path.param ? "Events" : "Bytes"; });

TEST_P(ConnectClock, TheZoneIsTheOneOfTheMoment) {
    const TimeZone zone("UTC0");
    InProcessDevice& device = connectAndAnswer(5);
    TimeZone::set("<+0545>-5:45");
    expectAhead(device, 5 * 3600 + 45 * 60);
}

TEST_P(ConnectClock, AZoneThatChangesWhileRunningIsFollowed) {
    const TimeZone zone("<+14>-14");
    InProcessDevice& device = connectAndAnswer(5);
    expectAhead(device, 14 * 3600);
    device.answer(reply::dateSet);
    unplug(device);
    TimeZone::set("EST5");
    expectAhead(connectAndAnswer(5), -5 * 3600);
}

TEST_P(ConnectClock, AClockThatIsSetBackBetweenTwoConnectionsIsFollowed) {
    const TimeZone zone("<+14>-14");
    InProcessDevice& device = connectAndAnswer(5);
    const std::time_t first = timeTold(device);
    device.answer(reply::dateSet);
    unplug(device);
    TimeZone::set("<-12>12"); // 26 hours back
    InProcessDevice& again = connectAndAnswer(5);
    const std::time_t second = timeTold(again);
    EXPECT_LT(second, first);
    again.answer(reply::dateSet);
    EXPECT_EQ(completions, 2);
}

TEST_P(ConnectClock, SummerTimeCounts) {
    const TimeZone zone("EST5EDT,0/0,J365/25"); // all the year
    expectAhead(connectAndAnswer(5), -4 * 3600);
}

TEST_P(ConnectClock, AZoneThatIsNoneIsTakenForUtc) {
    const TimeZone zone("UTC0");
    for (const std::string& name :
         std::vector<std::string>{"", "garbage", ":/nowhere/at/all", std::string(5000, '/')}) {
        TimeZone::set(name);
        InProcessDevice& device = connectAndAnswer(5);
        expectAhead(device, 0);
        device.answer(reply::dateSet);
        unplug(device);
    }
}

} // namespace
} // namespace deckmate::test
