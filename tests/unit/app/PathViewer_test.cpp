#include "app/PathViewer.h"

#include <gtest/gtest.h>

namespace deckmate {
namespace {

TEST(PathViewer, TheLastComponentFollowsTheLastSlash) {
    EXPECT_EQ(lastPathComponent("/a/b/Recordings"), "Recordings");
    EXPECT_EQ(lastPathComponent("Recordings"), "Recordings");
    EXPECT_EQ(lastPathComponent("a/b c.wav"), "b c.wav");
}

TEST(PathViewer, SlashesAtTheEndDontCount) {
    EXPECT_EQ(lastPathComponent("/a/b/"), "b");
    EXPECT_EQ(lastPathComponent("/a/b///"), "b");
}

TEST(PathViewer, TheRootIsItsOwnLastComponent) {
    EXPECT_EQ(lastPathComponent("/"), "/");
    EXPECT_EQ(lastPathComponent("///"), "/");
}

TEST(PathViewer, AnEmptyPathHasAnEmptyLastComponent) {
    EXPECT_EQ(lastPathComponent(""), "");
}

} // namespace
} // namespace deckmate
