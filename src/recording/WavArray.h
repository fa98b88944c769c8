// A raw block of samples or bytes that its holder frees.
#pragma once

#include "recording/HugePages.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <new>
#include <span>
#include <type_traits>
#include <utility>

namespace deckmate {

/// Owns a block from `malloc`/`realloc`, filled by whoever made it. `bytes` and `length` are set
/// independently, so that a holder can grow the block in place; the length counts elements.
/// Movable, not copyable. For one thread at a time.
template <class Element>
class BasicWavArray {
    static_assert(std::is_trivially_copyable_v<Element>);

public:
    BasicWavArray() = default;
    /// Takes over `bytes` (from `malloc`, or null), which hold `length` elements.
    BasicWavArray(Element* bytes, std::uint64_t length)
        : bytes_(bytes), length_(length), live_(bytes != nullptr) {}
    /// A block of its own with the same elements; no block for none. Throws std::bad_alloc.
    static BasicWavArray copyOf(std::span<const Element> elements) {
        if (elements.empty()) {
            return {};
        }
        // NOLINTNEXTLINE(cppcoreguidelines-no-malloc): blocks are malloc's
        auto* block = static_cast<Element*>(std::malloc(elements.size_bytes()));
        if (block == nullptr) {
            throw std::bad_alloc();
        }
        adviseHugePages(block, elements.size_bytes());
        std::copy(elements.begin(), elements.end(), block);
        return {block, elements.size()};
    }
    BasicWavArray(BasicWavArray&& other) noexcept { swap(other); }
    BasicWavArray& operator=(BasicWavArray&& other) noexcept {
        BasicWavArray taken(std::move(other));
        swap(taken);
        return *this;
    }
    BasicWavArray(const BasicWavArray&) = delete;
    BasicWavArray& operator=(const BasicWavArray&) = delete;
    ~BasicWavArray() { dispose(); }

    Element* bytes() { return bytes_; }
    const Element* bytes() const { return bytes_; }
    /// Does not free the block held before: a holder that reallocates sets the new address here.
    void setBytes(Element* bytes) {
        bytes_ = bytes;
        live_ = bytes != nullptr;
    }

    std::uint64_t length() const { return length_; }
    void setLength(std::uint64_t length) { length_ = length; }

    /// Frees the block and sets the length to 0. The address stays as it was, but is not freed
    /// again by a second call or by the destructor.
    void dispose() {
        if (live_) {
            std::free(bytes_); // NOLINT(cppcoreguidelines-no-malloc)
        }
        live_ = false;
        length_ = 0;
    }

private:
    void swap(BasicWavArray& other) noexcept {
        std::swap(bytes_, other.bytes_);
        std::swap(length_, other.length_);
        std::swap(live_, other.live_);
    }

    Element* bytes_ = nullptr;
    std::uint64_t length_ = 0;
    bool live_ = false;
};

using WavArray = BasicWavArray<std::uint8_t>;
using WavArrayFloat = BasicWavArray<double>;
using WavArrayFloat32 = BasicWavArray<float>;

} // namespace deckmate
