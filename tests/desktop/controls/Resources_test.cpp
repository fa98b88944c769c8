#include "controls/Resources.h"

#include "desktop/controls/ControlsTest.h"

namespace deckmate::test {

namespace {

TEST(Resources, ColoursByName) {
    EXPECT_EQ(colour("AppBG"), QColor("#17191C"));
    EXPECT_EQ(colour("AppBGLight"), QColor("#212429"));
    EXPECT_EQ(colour("ControlColor"), QColor("#2E3238"));
    EXPECT_EQ(colour("WHITE"), QColor("#FFFFFF"));
    EXPECT_EQ(colour("Focus"), QColor("#8FA3BF"));
    EXPECT_FALSE(colour("appbg").isValid());
}

TEST(Resources, AnImageHasThePixelsThatTheRatioAsksFor) {
    const QPixmap pixels = image("levelmeter", {18, 300}, 1.5);
    EXPECT_EQ(pixels.size(), QSize(27, 450));
    EXPECT_EQ(pixels.devicePixelRatio(), 1.5);
}

TEST(Resources, AnImageFillsItsPlace) {
    const QImage pixels = image("levelmeter2", {18, 70}, 2).toImage();
    EXPECT_EQ(pixels.pixelColor(18, 0), QColor("#3A3D42"));
    EXPECT_EQ(pixels.pixelColor(18, 139), QColor("#3A3D42"));
    EXPECT_EQ(pixels.pixelColor(0, 70), QColor("#3A3D42"));
    EXPECT_EQ(pixels.pixelColor(35, 70), QColor("#3A3D42"));
}

TEST(Resources, WhatDoesNotExistIsEmpty) {
    EXPECT_TRUE(image("no-such", {18, 70}, 1).isNull());
    EXPECT_TRUE(image("", {18, 70}, 1).isNull());
    EXPECT_TRUE(image("levelmeter", {0, 70}, 1).isNull());
    EXPECT_TRUE(icon("no-such").isNull());
}

TEST(Resources, AnIconIsDrawnInAnySize) {
    const QIcon drawn = icon("levelmeter2");
    ASSERT_FALSE(drawn.isNull());
    EXPECT_EQ(drawn.pixmap(QSize(18, 350), 1.0).toImage().pixelColor(9, 175), QColor("#3A3D42"));
}

} // namespace

} // namespace deckmate::test
