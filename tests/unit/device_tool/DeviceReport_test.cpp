#include "h8-device/DeviceReport.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>

namespace deckmate::tools {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Pair;

/// Of a recorder with a card.
ORLODeviceInfo known() {
    ORLODeviceInfo info;
    info.device_id = {0x52, 0x6E, 0x01, 0x0A};
    info.version = {'0', '1', '0', '5'};
    info.batteryType = 2;
    info.autoPowOffType = 3;
    info.sdExist = 1;
    info.sdRemaining = {1, 2, 3};
    info.sdUsedSize = "8.00 MB";
    info.sdMaxSize = "32.0 GB";
    return info;
}

/// The line's value; a mark if there is no such line.
std::string valueOf(const ORLODeviceInfo& info, const std::string& name) {
    const auto lines = reportLines(info);
    const auto found = std::find_if(lines.begin(), lines.end(),
                                    [&](const auto& line) { return line.first == name; });
    return found != lines.end() ? found->second : "(missing)";
}

TEST(DeviceReport, HasALineForEachThing) {
    EXPECT_THAT(reportLines(known()),
                ElementsAre(Pair("identity", "52 6E 01 0A"), Pair("version", "1.05"),
                            Pair("card", "8.00 MB of 32.0 GB used, 01:02:03 left"),
                            Pair("battery type", "2"), Pair("auto power-off", "3")));
}

TEST(DeviceReport, IsOneObjectInALine) {
    EXPECT_EQ(reportJson(known()),
              R"({"identity":[82,110,1,10],"version":"1.05",)"
              R"("card":{"used":"8.00 MB","capacity":"32.0 GB","remaining":"01:02:03"},)"
              R"("battery_type":2,"auto_power_off":3})");
}

TEST(DeviceReport, OfNothingHasNeitherVersionNorCard) {
    EXPECT_THAT(reportLines({}),
                ElementsAre(Pair("identity", "00 00 00 00"), Pair("version", "?.??"),
                            Pair("card", "none"), Pair("battery type", "0"),
                            Pair("auto power-off", "0")));
    EXPECT_EQ(reportJson({}), R"({"identity":[0,0,0,0],"version":null,"card":null,)"
                              R"("battery_type":0,"auto_power_off":0})");
}

TEST(DeviceReport, BytesHaveNoSign) {
    ORLODeviceInfo info = known();
    info.device_id = {0xFF, 0x80, 0x7F, 0x00};
    info.batteryType = 200;
    info.autoPowOffType = 255;
    EXPECT_EQ(valueOf(info, "identity"), "FF 80 7F 00");
    EXPECT_EQ(valueOf(info, "battery type"), "200");
    EXPECT_EQ(valueOf(info, "auto power-off"), "255");
    const std::string json = reportJson(info);
    EXPECT_THAT(json, HasSubstr(R"("identity":[255,128,127,0])"));
    EXPECT_THAT(json, HasSubstr(R"("battery_type":200,"auto_power_off":255})"));
}

TEST(DeviceReport, AZeroInTheVersionCantBeShown) {
    for (std::size_t i = 1; i < 4; ++i) {
        ORLODeviceInfo info = known();
        info.version[i] = '\0';
        std::string expected = "1.05";
        expected[i == 1 ? 0 : i] = '?';
        EXPECT_EQ(valueOf(info, "version"), expected);
        EXPECT_THAT(reportJson(info), HasSubstr(R"("version":null,)"));
    }
}

TEST(DeviceReport, TheFirstCharacterOfTheVersionIsNotShown) {
    ORLODeviceInfo info = known();
    info.version[0] = '\0';
    EXPECT_EQ(valueOf(info, "version"), "1.05");
    EXPECT_THAT(reportJson(info), HasSubstr(R"("version":"1.05",)"));
}

TEST(DeviceReport, OnlyPlainCharactersOfTheVersionAreShown) {
    for (const int character : {0x01, 0x0A, 0x1B, 0x1F, 0x7F, 0x80, 0xC3, 0xFF}) {
        ORLODeviceInfo info = known();
        info.version[2] = static_cast<char>(character);
        EXPECT_EQ(valueOf(info, "version"), "1.?5") << character;
        EXPECT_THAT(reportJson(info), HasSubstr(R"("version":null,)")) << character;
    }
    for (const char character : {' ', '~'}) {
        ORLODeviceInfo info = known();
        info.version[2] = character;
        const std::string expected = std::string("1.") + character + "5";
        EXPECT_EQ(valueOf(info, "version"), expected);
        EXPECT_THAT(reportJson(info), HasSubstr("\"version\":\"" + expected + "\""));
    }
}

TEST(DeviceReport, QuotesAndBackslashesOfTheVersionAreEscaped) {
    ORLODeviceInfo info = known();
    info.version = {'0', '"', '\\', '"'};
    EXPECT_EQ(valueOf(info, "version"), R"(".\")");
    EXPECT_THAT(reportJson(info), HasSubstr(R"("version":"\".\\\"")"));
}

TEST(DeviceReport, TextsOfTheCardAreEscaped) {
    ORLODeviceInfo info = known();
    info.sdUsedSize = "8\n\"\\";
    info.sdMaxSize = std::string("\0", 1);
    const std::string json = reportJson(info);
    EXPECT_THAT(json, HasSubstr(R"("used":"8\n\"\\")"));
    EXPECT_THAT(json, HasSubstr(R"("capacity":"\u0000")"));
}

TEST(DeviceReport, ACardIsThereUnlessItsFlagIsZero) {
    for (const int present : {1, 2, 127, 255}) {
        ORLODeviceInfo info = known();
        info.sdExist = static_cast<std::uint8_t>(present);
        EXPECT_EQ(valueOf(info, "card"), "8.00 MB of 32.0 GB used, 01:02:03 left") << present;
        EXPECT_THAT(reportJson(info), HasSubstr(R"("card":{)")) << present;
    }
    ORLODeviceInfo info = known();
    info.sdExist = 0;
    EXPECT_EQ(valueOf(info, "card"), "none");
    EXPECT_THAT(reportJson(info), HasSubstr(R"("card":null,)"));
}

TEST(DeviceReport, TheRemainingTimeIsToldAsItCame) {
    ORLODeviceInfo info = known();
    info.sdRemaining = {255, 255, 255};
    EXPECT_EQ(valueOf(info, "card"), "8.00 MB of 32.0 GB used, 255:255:255 left");
    EXPECT_THAT(reportJson(info), HasSubstr(R"("remaining":"255:255:255"})"));
    info.sdRemaining = {0, 0, 0};
    EXPECT_EQ(valueOf(info, "card"), "8.00 MB of 32.0 GB used, 00:00:00 left");
}

} // namespace
} // namespace deckmate::tools
