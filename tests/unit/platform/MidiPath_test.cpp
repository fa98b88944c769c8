#include "platform/alsa/MidiPath.h"

#include <gtest/gtest.h>
#include <string_view>

namespace deckmate {
namespace {

TEST(MidiPath, EventListsBeginWithKernel6_5) {
    EXPECT_TRUE(usesEventLists("6.5.0", ""));
    EXPECT_TRUE(usesEventLists("6.10.3-1-amd64", ""));
    EXPECT_TRUE(usesEventLists("7.0", ""));
    EXPECT_TRUE(usesEventLists("10.1.2", ""));
    EXPECT_FALSE(usesEventLists("6.4.16", ""));
    EXPECT_FALSE(usesEventLists("6.1.0-56-amd64", ""));
    EXPECT_FALSE(usesEventLists("5.15", ""));
}

TEST(MidiPath, TheVariableHasTheLastWord) {
    EXPECT_TRUE(usesEventLists("6.1.0", "events"));
    EXPECT_FALSE(usesEventLists("6.5.0", "packets"));
}

TEST(MidiPath, OtherValuesOfTheVariableSayNothing) {
    for (const std::string_view value : {"", "Events", "packet", "1"}) {
        EXPECT_TRUE(usesEventLists("6.5.0", value)) << value;
        EXPECT_FALSE(usesEventLists("6.1.0", value)) << value;
    }
}

TEST(MidiPath, AReleaseThatIsNoVersionHasNoEventLists) {
    for (const std::string_view release : {"", "6", "6.", "six.five", ".5", "6.x", "-7.0"}) {
        EXPECT_FALSE(usesEventLists(release, "")) << release;
    }
}

} // namespace
} // namespace deckmate
