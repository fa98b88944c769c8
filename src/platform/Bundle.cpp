#include "platform/Bundle.h"

#include "platform/InformationDictionary.h"

#include <algorithm>

namespace deckmate {

std::optional<std::string_view> Bundle::objectForInfoDictionaryKey(std::string_view key) {
    const auto* const found =
        std::find_if(informationDictionary.begin(), informationDictionary.end(),
                     [key](const auto& entry) { return entry.first == key; });
    return found != informationDictionary.end() ? std::optional(found->second) : std::nullopt;
}

} // namespace deckmate
