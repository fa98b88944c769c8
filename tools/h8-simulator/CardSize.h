// Card sizes: as bytes, as the ten digits of a card report, and as people write them.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

namespace deckmate::tools {

constexpr std::size_t numberOfDigits = 10;
using Digits = std::array<std::uint8_t, numberOfDigits>;

/// 512 TiB less one byte, all that seven digits hold.
constexpr std::uint64_t largestSize = (std::uint64_t{1} << 49) - 1;

/// To the base of 128, lowest first. Sizes up to `largestSize` leave the last three digits, whose
/// weights are none of that base's, at 0, so that the sum of the weighted digits is the size. Of
/// whole mebibytes below a gibibyte, and of whole gibibytes, that sum is exact in single precision
/// too, and so is the text that a computer makes of it.
Digits digitsOf(std::uint64_t size);

/// The sum of the digits by the protocol's weights: 2 to the power of 0, 7, 14, 21, 28, 35, 42, 47,
/// 56, and of the last one's lowest bit 63.
std::uint64_t bytesOf(std::span<const std::uint8_t, numberOfDigits> digits);

/// Bytes, or a number (decimals allowed) with the unit KB, MB, GB or TB (the B may be left out), in
/// any case of letters. Units are those of the computer's texts: 1 KB is 1024 bytes. Nothing for
/// what is none of these, negative or beyond `largestSize`.
std::optional<std::uint64_t> parseSize(std::string_view text);

} // namespace deckmate::tools
