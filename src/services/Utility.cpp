#include "services/Utility.h"

#include "platform/UserDefaults.h"

namespace deckmate {

using std::chrono::steady_clock;

std::optional<steady_clock::time_point> Utility::S_StopWatch_start;

void Utility::store(std::string_view key, std::string_view valueString) {
    UserDefaults::standard().setString(valueString, key);
}

std::optional<std::string> Utility::getStringValue(std::string_view key) {
    return UserDefaults::standard().stringForKey(key);
}

void Utility::stopWatch_start() {
    S_StopWatch_start = steady_clock::now();
}

double Utility::stopWatch_stop() {
    if (!S_StopWatch_start) {
        return 0;
    }
    return std::chrono::duration<double>(steady_clock::now() - *S_StopWatch_start).count();
}

} // namespace deckmate
