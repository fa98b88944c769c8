#include "app/WindowPlaces.h"

#include <gtest/gtest.h>

namespace deckmate {
namespace {

TEST(WindowPlaces, TheMainWindowStandsInTheMiddleOfWhatIsFree) {
    EXPECT_EQ(mainWindowPlace(QRectF(0, 0, 1600, 1000)), QRect(275, 166, 1050, 668));
}

TEST(WindowPlaces, PanelsAtTheEdgesMoveTheMiddle) {
    EXPECT_EQ(mainWindowPlace(QRectF(64, 32, 1536, 968)), QRect(307, 182, 1050, 668));
}

TEST(WindowPlaces, OnAScreenThatIsTooSmallTheMainWindowKeepsItsSizeAndItsMiddle) {
    EXPECT_EQ(mainWindowPlace(QRectF(0, 0, 800, 600)), QRect(-125, -34, 1050, 668));
}

TEST(WindowPlaces, WithoutAScreenTheMainWindowStandsAroundTheOrigin) {
    EXPECT_EQ(mainWindowPlace(QRectF()), QRect(-525, -334, 1050, 668));
}

TEST(WindowPlaces, ADialogHasTheMiddleOfTheWindowThatPresentsIt) {
    EXPECT_EQ(originCentredOn(QRectF(275, 166, 1050, 668), QSizeF(400, 268)), QPoint(600, 366));
}

TEST(WindowPlaces, ADialogLargerThanItsPresenterBeginsBeforeIt) {
    EXPECT_EQ(originCentredOn(QRectF(100, 100, 200, 100), QSizeF(400, 300)), QPoint(0, 0));
}

TEST(WindowPlaces, WithoutAPresenterADialogStandsAroundTheOrigin) {
    EXPECT_EQ(originCentredOn(QRectF(), QSizeF(400, 268)), QPoint(-200, -134));
}

} // namespace
} // namespace deckmate
