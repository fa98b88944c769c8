#include "platform/alsa/MidiPath.h"

#include <charconv>
#include <utility>

namespace deckmate {

bool usesEventLists(std::string_view release, std::string_view forced) {
    if (forced == "packets" || forced == "events") {
        return forced == "events";
    }
    const char* const end = release.data() + release.size();
    std::pair<int, int> version{0, 0};
    const auto major = std::from_chars(release.data(), end, version.first);
    if (major.ptr != end && *major.ptr == '.') {
        std::from_chars(major.ptr + 1, end, version.second);
    }
    return version >= std::pair(6, 5);
}

} // namespace deckmate
