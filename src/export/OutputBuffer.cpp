#include "export/OutputBuffer.h"

#include "recording/HugePages.h"

#include <algorithm>
#include <limits>

namespace deckmate {

bool OutputBuffer::reserve(std::size_t capacity) {
    if (capacity <= capacity_) {
        return true;
    }
    // NOLINTNEXTLINE(cppcoreguidelines-no-malloc): only realloc can grow a block in place
    auto* grown = static_cast<std::uint8_t*>(std::realloc(block_.get(), capacity));
    if (grown == nullptr) {
        return false;
    }
    static_cast<void>(block_.release());
    block_.reset(grown);
    capacity_ = capacity;
    adviseHugePages(grown, capacity);
    return true;
}

std::uint8_t* OutputBuffer::extend(std::size_t count) {
    if (count > std::numeric_limits<std::size_t>::max() - size_) {
        return nullptr;
    }
    const std::size_t needed = std::max<std::size_t>(size_ + count, 1);
    if (needed > capacity_ && !reserve(std::max(needed, capacity_ + capacity_ / 2))) {
        return nullptr;
    }
    std::uint8_t* start = block_.get() + size_;
    size_ += count;
    return start;
}

void OutputBuffer::clear() {
    block_.reset();
    size_ = 0;
    capacity_ = 0;
}

} // namespace deckmate
