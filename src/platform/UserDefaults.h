// The user's preferences, which last from one run to the next.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace deckmate {

/// Texts by name. Both may hold any bytes. Names are case-sensitive.
///
///     UserDefaults::standard().setString("/home/ann/Takes", "UD_LAST_OPEN_FOLDER");
///
/// Exactly one exists while anything of this program runs; whoever made it outlives its users.
/// Thread: any.
class UserDefaults {
public:
    /// Makes these the preferences that standard() gives.
    UserDefaults();
    virtual ~UserDefaults();
    UserDefaults(const UserDefaults&) = delete;
    UserDefaults& operator=(const UserDefaults&) = delete;
    UserDefaults(UserDefaults&&) = delete;
    UserDefaults& operator=(UserDefaults&&) = delete;

    /// The ones that exist.
    static UserDefaults& standard();

    /// Nothing if there is none, or none that can be read.
    virtual std::optional<std::string> stringForKey(std::string_view key) const = 0;
    /// Replaces the value; stored for good when this returns. Where it can't be stored it may be
    /// lost at the end of the program, or at once.
    virtual void setString(std::string_view value, std::string_view key) = 0;
};

} // namespace deckmate
