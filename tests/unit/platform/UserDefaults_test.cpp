#include "platform/UserDefaults.h"

#include "support/MemoryUserDefaults.h"

#include <gtest/gtest.h>
#include <memory>

namespace deckmate {
namespace {

using test::MemoryUserDefaults;

TEST(UserDefaults, TheOnesThatExistAreTheStandard) {
    const MemoryUserDefaults defaults;
    EXPECT_EQ(&UserDefaults::standard(), &defaults);
}

TEST(UserDefaults, OthersMayComeAfterTheFirst) {
    auto defaults = std::make_unique<MemoryUserDefaults>();
    defaults = nullptr;
    defaults = std::make_unique<MemoryUserDefaults>();
    EXPECT_EQ(&UserDefaults::standard(), defaults.get());
}

TEST(UserDefaultsDeathTest, AskingForThemWhereThereAreNoneEndsTheProgram) {
    EXPECT_DEATH(UserDefaults::standard(), "UserDefaults doesn't exist");
}

} // namespace
} // namespace deckmate
