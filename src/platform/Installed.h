// The one instance that stands for the running system, so that code reaches it without being given
// it.
#pragma once

#include "platform/Log.h"

#include <atomic>
#include <cstdlib>
#include <string>
#include <string_view>

namespace deckmate {

/// Keeps track of the instance of `Kind` that exists. Having two, or asking for one where there is
/// none, is a mistake of this program: it is logged and the program ends. Thread: any.
template <class Kind>
class Installed {
public:
    /// `name` has to last as long as this.
    explicit constexpr Installed(std::string_view name) : name_(name) {}

    void install(Kind& instance) {
        Kind* none = nullptr;
        if (!instance_.compare_exchange_strong(none, &instance)) {
            end(" exists already");
        }
    }
    void remove() { instance_ = nullptr; }
    Kind& get() const {
        Kind* const instance = instance_;
        if (instance == nullptr) {
            end(" doesn't exist");
        }
        return *instance;
    }

private:
    [[noreturn]] void end(std::string_view mistake) const {
        Log::write(std::string(name_).append(mistake));
        std::abort();
    }

    std::string_view name_;
    std::atomic<Kind*> instance_ = nullptr;
};

} // namespace deckmate
