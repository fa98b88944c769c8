#include "h8-simulator/CardSize.h"

#include <cctype>
#include <charconv>
#include <cmath>
#include <string>
#include <system_error>

namespace deckmate::tools {

namespace {

constexpr int bitsPerDigit = 7;
constexpr std::array<int, numberOfDigits> weights = {0, 7, 14, 21, 28, 35, 42, 47, 56, 63};

std::optional<double> factorOf(std::string_view unit) {
    std::string name;
    for (const char letter : unit) {
        name += static_cast<char>(std::toupper(static_cast<unsigned char>(letter)));
    }
    if (name.empty() || name == "B") {
        return 1;
    }
    if (name.size() == 2 && name[1] == 'B') {
        name.pop_back();
    }
    const std::size_t power = std::string_view("KMGT").find(name);
    if (name.size() != 1 || power == std::string_view::npos) {
        return std::nullopt;
    }
    return std::ldexp(1.0, 10 * (static_cast<int>(power) + 1));
}

} // namespace

Digits digitsOf(std::uint64_t size) {
    Digits digits = {};
    for (std::uint8_t& digit : digits) {
        digit = size & 0x7F;
        size >>= bitsPerDigit;
    }
    return digits;
}

std::uint64_t bytesOf(std::span<const std::uint8_t, numberOfDigits> digits) {
    std::uint64_t size = 0;
    for (std::size_t i = 0; i < numberOfDigits; ++i) {
        size += std::uint64_t{digits[i]} << weights[i];
    }
    return size;
}

std::optional<std::uint64_t> parseSize(std::string_view text) {
    double number = 0;
    const auto [rest, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc()) {
        return std::nullopt;
    }
    std::string_view unit = text.substr(static_cast<std::size_t>(rest - text.data()));
    if (unit.starts_with(' ')) {
        unit.remove_prefix(1);
    }
    const std::optional<double> factor = factorOf(unit);
    const double size = std::round(number * factor.value_or(0));
    // Not a number is not inside, either.
    if (!factor || !(size >= 0 && size <= static_cast<double>(largestSize))) {
        return std::nullopt;
    }
    return static_cast<std::uint64_t>(size);
}

} // namespace deckmate::tools
