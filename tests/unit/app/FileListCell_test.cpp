#include "app/FileListCell.h"

#include <gtest/gtest.h>

namespace deckmate {
namespace {

TEST(FileListCell, TheCellIsKnownByItsIdentifier) {
    EXPECT_EQ(FileListCell::CELL_ID(), "fileListCellID");
}

TEST(FileListCell, TheIconIsCentredInTheRowAndTheNameFollowsIt) {
    const auto places = FileListCell::placesIn(QRect(18, 168, 288, 28), Qt::LeftToRight);
    EXPECT_EQ(places.icon, QRect(30, 174, 16, 16));
    EXPECT_EQ(places.name, QRect(56, 168, 244, 28));
}

TEST(FileListCell, TheNameEndsBeforeTheCellDoes) {
    const auto places = FileListCell::placesIn(QRect(0, 0, 144, 28), Qt::LeftToRight);
    EXPECT_EQ(places.name.width(), 144 - FileListCell::widthBesideName);
}

TEST(FileListCell, WhereTheLanguageRunsFromTheRightTheIconStandsThere) {
    const auto places = FileListCell::placesIn(QRect(0, 0, 100, 28), Qt::RightToLeft);
    EXPECT_EQ(places.icon, QRect(72, 6, 16, 16));
    EXPECT_EQ(places.name, QRect(6, 0, 56, 28));
}

TEST(FileListCell, ACellTooNarrowForANameHasNoneButNoNegativeWidthEither) {
    EXPECT_EQ(FileListCell::placesIn(QRect(0, 0, 10, 28), Qt::LeftToRight).name.width(), 0);
}

} // namespace
} // namespace deckmate
