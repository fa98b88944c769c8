#include "controls/Resources.h"

#include "desktop/controls/ControlsTest.h"

#include <QPainter>

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

/// In its middle, over black.
QColor middleOf(const QPixmap& pixels) {
    QImage image(pixels.size(), QImage::Format_RGB32);
    image.fill(Qt::black);
    QPainter painter(&image);
    painter.drawPixmap(0, 0, image.width(), image.height(), pixels);
    painter.end();
    return image.pixelColor(image.width() / 2, image.height() / 2);
}

TEST(Resources, AnIconOnWhatCannotActHasTwoFifthsOfItsStrength) {
    const QIcon drawn = icon("levelmeter2"); // grey 0x3A, 0x3D, 0x42 all over
    for (const double ratio : {1.0, 1.5, 2.0}) {
        EXPECT_EQ(middleOf(drawn.pixmap(QSize(18, 300), ratio)), QColor(0x3A, 0x3D, 0x42)) << ratio;
        // 0.4 of 58, 61 and 66.
        EXPECT_EQ(middleOf(drawn.pixmap(QSize(18, 300), ratio, QIcon::Disabled)),
                  QColor(23, 24, 26))
            << ratio;
    }
}

TEST(Resources, APaintedIconFillsItsPlaceAtAnyRatio) {
    QImage image(27, 525, QImage::Format_RGB32);
    image.fill(Qt::black);
    image.setDevicePixelRatio(1.5);
    QPainter painter(&image);
    icon("levelmeter2").paint(&painter, QRect(0, 0, 18, 350));
    painter.end();
    EXPECT_EQ(image.pixelColor(13, 0), QColor("#3A3D42"));
    EXPECT_EQ(image.pixelColor(13, 524), QColor("#3A3D42"));
    EXPECT_EQ(image.pixelColor(26, 225), QColor("#3A3D42"));
}

TEST(Resources, AnIconIsDrawnInAnySize) {
    const QIcon drawn = icon("levelmeter2");
    ASSERT_FALSE(drawn.isNull());
    EXPECT_EQ(drawn.pixmap(QSize(18, 350), 1.0).toImage().pixelColor(9, 175), QColor("#3A3D42"));
}

} // namespace

} // namespace deckmate::test
