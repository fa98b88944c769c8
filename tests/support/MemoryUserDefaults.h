// Preferences that last as long as a test.
#pragma once

#include "platform/UserDefaults.h"

#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

namespace deckmate::test {

class MemoryUserDefaults final : public UserDefaults {
public:
    std::optional<std::string> stringForKey(std::string_view key) const override {
        const std::lock_guard guard(lock_);
        const auto found = values_.find(key);
        return found != values_.end() ? std::optional(found->second) : std::nullopt;
    }
    void setString(std::string_view value, std::string_view key) override {
        const std::lock_guard guard(lock_);
        values_.insert_or_assign(std::string(key), std::string(value));
    }

private:
    mutable std::mutex lock_;
    std::map<std::string, std::string, std::less<>> values_;
};

} // namespace deckmate::test
