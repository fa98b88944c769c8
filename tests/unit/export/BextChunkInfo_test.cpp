#include "export/BextChunkInfo.h"

#include <clocale>
#include <cstdlib>
#include <ctime>
#include <gtest/gtest.h>

namespace deckmate {
namespace {

using std::chrono::system_clock;

/// Sets the time zone for one test, and leaves it to the code under test to notice.
class TimeZone {
public:
    explicit TimeZone(const char* name) { setenv("TZ", name, 1); }
    ~TimeZone() { unsetenv("TZ"); }
    TimeZone(const TimeZone&) = delete;
    TimeZone& operator=(const TimeZone&) = delete;
    TimeZone(TimeZone&&) = delete;
    TimeZone& operator=(TimeZone&&) = delete;
};

// 2026-03-04 23:06:07 UTC, counted out by hand: 20516 days and 83167 seconds after 1970.
constexpr std::time_t moment = std::time_t{20516} * 86400 + 83167;

TEST(BextChunkInfo, StartsWithItsDefaults) {
    const system_clock::time_point before = system_clock::now();
    const BextChunkInfo bext;
    const system_clock::time_point after = system_clock::now();
    EXPECT_EQ(bext.TimeReference, 0);
    EXPECT_EQ(bext.Version, 1);
    EXPECT_EQ(bext.Description, "");
    EXPECT_EQ(bext.Originator, "");
    EXPECT_EQ(bext.OriginatorReference, "");
    EXPECT_EQ(bext.UniqueMaterialIdentifier, "");
    EXPECT_EQ(bext.CodingHistory, "");
    EXPECT_LE(before, bext.OriginationDateTime);
    EXPECT_GE(after, bext.OriginationDateTime);
}

TEST(BextChunkInfo, ReservesZeroBytes) {
    const BextChunkInfo bext;
    ASSERT_EQ(bext.Reserved().length(), 190U);
    for (int i = 0; i < 190; ++i) {
        EXPECT_EQ(bext.Reserved().bytes()[i], 0);
    }
}

TEST(BextChunkInfo, DisposeDropsTheReservedBytes) {
    BextChunkInfo bext;
    bext.dispose();
    bext.dispose();
    EXPECT_EQ(bext.Reserved().length(), 0U);
}

TEST(BextChunkInfo, DateAndTimeAreLocal) {
    BextChunkInfo bext;
    bext.OriginationDateTime = system_clock::from_time_t(moment);
    {
        const TimeZone utc("UTC0");
        EXPECT_EQ(bext.OriginationDate(), "2026-03-04");
        EXPECT_EQ(bext.OriginationTime(), "23:06:07");
    }
    const TimeZone east("EAST-5:30"); // formatted anew, in the zone of now
    EXPECT_EQ(bext.OriginationDate(), "2026-03-05");
    EXPECT_EQ(bext.OriginationTime(), "04:36:07");
}

TEST(BextChunkInfo, AFractionOfASecondIsCut) {
    const TimeZone utc("UTC0");
    BextChunkInfo bext;
    bext.OriginationDateTime = system_clock::from_time_t(moment) + std::chrono::milliseconds(999);
    EXPECT_EQ(bext.OriginationTime(), "23:06:07");
}

TEST(BextChunkInfo, DateAndTimeAreAsciiUnderEveryLocale) {
    const TimeZone utc("UTC0");
    BextChunkInfo bext;
    bext.OriginationDateTime = system_clock::from_time_t(moment);
    for (const char* locale : {"", "C.UTF-8", "POSIX"}) {
        ASSERT_NE(std::setlocale(LC_ALL, locale), nullptr);
        EXPECT_EQ(bext.OriginationDate(), "2026-03-04");
    }
    std::setlocale(LC_ALL, "C");
}

} // namespace
} // namespace deckmate
