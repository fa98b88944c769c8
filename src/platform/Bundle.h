// What the program tells about itself: its information dictionary.
#pragma once

#include <optional>
#include <string_view>

namespace deckmate {

/// The short version string is the first two numbers of the version, the version the last one:
/// joined by a point they are the version that the project, its packages and its programs carry.
class Bundle {
public:
    /// Texts by key ("CFBundleName", "CFBundleShortVersionString", "CFBundleVersion"...), which
    /// last as long as the program; nothing for other keys. Thread: any.
    static std::optional<std::string_view> objectForInfoDictionaryKey(std::string_view key);
};

} // namespace deckmate
