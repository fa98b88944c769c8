// A growing block of bytes that is written to disk in one go.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <span>

namespace deckmate {

/// Grows in place where the system can, so that no second copy of a large output exists. Running
/// out of memory is an answer, not an exception. For one thread at a time.
class OutputBuffer {
public:
    /// Makes room for `capacity` bytes in all; NO when memory runs out, with nothing changed.
    bool reserve(std::size_t capacity);
    /// Appends `count` bytes, not yet set, and returns where they start; null when memory runs out,
    /// with nothing changed. Valid until the buffer grows again.
    std::uint8_t* extend(std::size_t count);
    void clear();

    std::size_t size() const { return size_; }
    std::span<std::uint8_t> bytes() { return {block_.get(), size_}; }
    std::span<const std::uint8_t> bytes() const { return {block_.get(), size_}; }

private:
    struct Free {
        void operator()(std::uint8_t* block) const {
            std::free(block); // NOLINT(cppcoreguidelines-no-malloc)
        }
    };

    std::unique_ptr<std::uint8_t, Free> block_;
    std::size_t size_ = 0;
    std::size_t capacity_ = 0;
};

} // namespace deckmate
