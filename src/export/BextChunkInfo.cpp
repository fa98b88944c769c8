#include "export/BextChunkInfo.h"

#include "export/BextLayout.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <mutex>
#include <new>

namespace deckmate {

namespace {

std::tm localTime(std::chrono::system_clock::time_point moment) {
    const std::time_t seconds = std::chrono::system_clock::to_time_t(moment);
    std::tm local = {};
    // localtime_r alone may go on using a time zone that has changed since. tzset may not run twice
    // at the same time.
    static std::mutex zoneLock;
    const std::lock_guard guard(zoneLock);
    tzset();
    localtime_r(&seconds, &local);
    return local;
}

template <class... Numbers>
std::string printed(const char* format, Numbers... numbers) {
    std::array<char, 48> text = {};
    std::snprintf(text.data(), text.size(), format, numbers...);
    return text.data();
}

} // namespace

BextChunkInfo::BextChunkInfo() {
    constexpr std::size_t size = bext::Reserved.width;
    // NOLINTNEXTLINE(cppcoreguidelines-no-malloc): a WavArray owns malloc's blocks
    auto* zeros = static_cast<std::uint8_t*>(std::calloc(size, 1));
    if (zeros == nullptr) {
        throw std::bad_alloc();
    }
    reserved_ = WavArray(zeros, size);
}

std::string BextChunkInfo::OriginationDate() const {
    const std::tm local = localTime(OriginationDateTime);
    return printed("%04d-%02d-%02d", local.tm_year + 1900, local.tm_mon + 1, local.tm_mday);
}

std::string BextChunkInfo::OriginationTime() const {
    const std::tm local = localTime(OriginationDateTime);
    return printed("%02d:%02d:%02d", local.tm_hour, local.tm_min, local.tm_sec);
}

} // namespace deckmate
