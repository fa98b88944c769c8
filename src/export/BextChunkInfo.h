// The fields of the `bext` chunk that an export writes.
#pragma once

#include "recording/WavArray.h"

#include <chrono>
#include <cstdint>
#include <string>

namespace deckmate {

/// Texts hold one character per byte (ISO 8859-1); the writer cuts and pads them to their width.
/// For one thread at a time. Throws std::bad_alloc on creation when memory runs out.
class BextChunkInfo {
public:
    BextChunkInfo();

    std::int64_t TimeReference = 0; ///< first sample since midnight, in frames
    std::uint16_t Version = 1;
    std::string Description;
    std::string Originator;
    std::string OriginatorReference;
    std::chrono::system_clock::time_point OriginationDateTime = std::chrono::system_clock::now();
    std::string UniqueMaterialIdentifier;
    std::string CodingHistory;

    /// 190 zero bytes; empty after `dispose`.
    const WavArray& Reserved() const { return reserved_; }
    /// "yyyy-MM-dd" in the local time zone, Gregorian, in ASCII digits under every locale.
    std::string OriginationDate() const;
    /// "HH:mm:ss", likewise.
    std::string OriginationTime() const;

    void dispose() { reserved_.dispose(); }

private:
    WavArray reserved_;
};

} // namespace deckmate
