// The user's preferences in a file by Qt.
#pragma once

#include "platform/UserDefaults.h"

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace deckmate {

/// An INI file that holds each value as text where it is plain, else as escaped bytes; it is
/// replaced as a whole at each change. What can't be read there counts as missing. A value that
/// can't be written is kept in memory, and is lost at the end.
class QtUserDefaults final : public UserDefaults {
public:
    /// orlo-h8-deckmate.ini in the user's configuration folder ($XDG_CONFIG_HOME, else
    /// $HOME/.config). Without either, as an absolute path, nothing is read or kept.
    QtUserDefaults();
    /// The folder is made if it is missing. At a path where something else than a file is, nothing
    /// is read or kept.
    explicit QtUserDefaults(const std::filesystem::path& path);
    ~QtUserDefaults() override;
    QtUserDefaults(const QtUserDefaults&) = delete;
    QtUserDefaults& operator=(const QtUserDefaults&) = delete;
    QtUserDefaults(QtUserDefaults&&) = delete;
    QtUserDefaults& operator=(QtUserDefaults&&) = delete;

    std::optional<std::string> stringForKey(std::string_view key) const override;
    void setString(std::string_view value, std::string_view key) override;

private:
    struct Impl;

    std::unique_ptr<Impl> impl_;
};

} // namespace deckmate
