#include "platform/Bundle.h"

#include <gtest/gtest.h>
#include <optional>
#include <string>

namespace deckmate {
namespace {

TEST(Bundle, TheTwoPartsOfTheVersionJoinToTheProjectsVersion) {
    const auto first = Bundle::objectForInfoDictionaryKey("CFBundleShortVersionString");
    const auto last = Bundle::objectForInfoDictionaryKey("CFBundleVersion");
    ASSERT_TRUE(first && last);
    EXPECT_EQ(std::string(*first) + "." + std::string(*last), DECKMATE_PROJECT_VERSION);
}

TEST(Bundle, TheBuildIsOneNumber) {
    const auto last = Bundle::objectForInfoDictionaryKey("CFBundleVersion");
    ASSERT_TRUE(last && !last->empty());
    EXPECT_EQ(last->find_first_not_of("0123456789"), std::string_view::npos);
}

TEST(Bundle, TheNameIsTheOneThatUsersSee) {
    EXPECT_EQ(Bundle::objectForInfoDictionaryKey("CFBundleName"), "ORLO H8 Deckmate");
}

TEST(Bundle, KeysAreTakenAsTheyStand) {
    EXPECT_EQ(Bundle::objectForInfoDictionaryKey("cfbundleversion"), std::nullopt);
    EXPECT_EQ(Bundle::objectForInfoDictionaryKey("CFBundleVersion "), std::nullopt);
    EXPECT_EQ(Bundle::objectForInfoDictionaryKey(""), std::nullopt);
}

} // namespace
} // namespace deckmate
