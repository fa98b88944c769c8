// Memory that faults on the first byte touched outside.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace deckmate::test {

/// `size` bytes between two pages that can't be accessed. The block ends flush with the page behind
/// it, or starts flush with the page before it.
class GuardedMemory {
public:
    enum class Flush { atEnd, atStart };

    explicit GuardedMemory(std::size_t size, Flush flush = Flush::atEnd);
    ~GuardedMemory();
    GuardedMemory(const GuardedMemory&) = delete;
    GuardedMemory& operator=(const GuardedMemory&) = delete;
    GuardedMemory(GuardedMemory&&) = delete;
    GuardedMemory& operator=(GuardedMemory&&) = delete;

    std::uint8_t* bytes() const { return block_; }
    /// The block as floats; its size must be a multiple of four.
    float* floats() const { return reinterpret_cast<float*>(block_); }

private:
    void* mapping_;
    std::size_t mappedSize_;
    std::uint8_t* block_;
};

} // namespace deckmate::test
