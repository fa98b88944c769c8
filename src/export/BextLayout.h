// Where the fields of a `bext` chunk lie (EBU Tech 3285, "Broadcast Wave Format", version 1).
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>

namespace deckmate::bext {

struct Field {
    std::size_t offset; ///< bytes from the start of the chunk body
    std::size_t width;  ///< bytes

    /// The part of the field that `body` holds: less than its width, or nothing, where the body
    /// ends early. What is missing counts as zero bytes.
    std::span<const std::uint8_t> in(std::span<const std::uint8_t> body) const {
        const std::size_t start = std::min(offset, body.size());
        return body.subspan(start, std::min(width, body.size() - start));
    }
};

inline constexpr Field Description{0, 256};
inline constexpr Field Originator{256, 32};
inline constexpr Field OriginatorReference{288, 32};
inline constexpr Field OriginationDate{320, 10};
inline constexpr Field OriginationTime{330, 8};
inline constexpr Field TimeReference{338, 8};
inline constexpr Field Version{346, 2};
inline constexpr Field UniqueMaterialIdentifier{348, 64};
inline constexpr Field Reserved{412, 190};

/// Size of the fixed fields: the coding history follows them, to the end of the body.
inline constexpr std::size_t fixedSize = Reserved.offset + Reserved.width;

/// The coding history, whatever its length.
inline std::span<const std::uint8_t> codingHistoryIn(std::span<const std::uint8_t> body) {
    return body.subspan(std::min(fixedSize, body.size()));
}

} // namespace deckmate::bext
