#include "app/DevicePanelText.h"

#include <gtest/gtest.h>

namespace deckmate {
namespace {

ORLODeviceInfo withCard() {
    ORLODeviceInfo info;
    info.sdExist = 1;
    info.sdUsedSize = "7.50 GB";
    info.sdMaxSize = "29.8 GB";
    info.sdRemaining = {2, 13, 45};
    return info;
}

TEST(DevicePanelText, TheVersionIsTheLastThreeCharacters) {
    ORLODeviceInfo info;
    info.version = {'V', '1', '2', '3'};
    EXPECT_EQ(versionText(info), "Ver. 1.23");
}

TEST(DevicePanelText, AVersionEndsAtAZero) {
    ORLODeviceInfo info;
    EXPECT_EQ(versionText(info), "Ver. ");
    info.version = {'0', '1', '\0', '3'};
    EXPECT_EQ(versionText(info), "Ver. 1.");
}

TEST(DevicePanelText, AVersionStaysOnItsLine) {
    ORLODeviceInfo info;
    info.version = {'0', '\n', '\x7F', '\x1B'};
    EXPECT_EQ(versionText(info), "Ver. ?.??");
}

TEST(DevicePanelText, ACardTellsItsSpaceAndTime) {
    EXPECT_EQ(usedText(withCard()), "7.50 GB / 29.8 GB Used");
    EXPECT_EQ(remainText(withCard()), "02:13:45");
}

TEST(DevicePanelText, WithoutACardThereArePlaceholders) {
    ORLODeviceInfo info = withCard();
    for (const int presence : {0, 2, 255}) {
        info.sdExist = static_cast<std::uint8_t>(presence);
        EXPECT_EQ(usedText(info), "-- GB / -- GB Used") << presence;
        EXPECT_EQ(remainText(info), "--:--:--") << presence;
    }
}

TEST(DevicePanelText, TimesOfThreeFiguresAreNotCut) {
    ORLODeviceInfo info = withCard();
    info.sdRemaining = {255, 255, 255};
    EXPECT_EQ(remainText(info), "255:255:255");
}

TEST(DevicePanelText, AutoPowerOffStandsFourthInTheMenuWhenItIsOff) {
    EXPECT_EQ(autoPowOffIndex(1), 0);
    EXPECT_EQ(autoPowOffIndex(2), 1);
    EXPECT_EQ(autoPowOffIndex(3), 2);
    EXPECT_EQ(autoPowOffIndex(0), 3);
}

TEST(DevicePanelText, EveryItemOfTheMenuHasItsCode) {
    EXPECT_EQ(autoPowOffCode(0), 1);
    EXPECT_EQ(autoPowOffCode(1), 2);
    EXPECT_EQ(autoPowOffCode(2), 3);
    EXPECT_EQ(autoPowOffCode(3), 0);
    EXPECT_EQ(autoPowOffCode(-1), 0);
}

} // namespace
} // namespace deckmate
