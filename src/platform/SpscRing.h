// A queue of fixed size from one thread to one other, neither of which ever waits.
#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <optional>
#include <type_traits>

namespace deckmate {

/// Holds up to `capacity` small values. One thread pushes, one thread pops. Realtime: yes.
template <class Value, std::size_t capacity>
class SpscRing {
    static_assert((capacity & (capacity - 1)) == 0, "positions wrap by a mask");
    static_assert(std::is_trivially_copyable_v<Value>);

public:
    /// NO when full. Thread: the pushing one.
    bool push(const Value& value) noexcept {
        const std::size_t end = end_.load(std::memory_order_relaxed);
        if (end - begin_.load(std::memory_order_acquire) == capacity) {
            return false;
        }
        values_[end & mask] = value;
        end_.store(end + 1, std::memory_order_release);
        return true;
    }

    /// Thread: the popping one.
    std::optional<Value> pop() noexcept {
        const std::size_t begin = begin_.load(std::memory_order_relaxed);
        if (begin == end_.load(std::memory_order_acquire)) {
            return std::nullopt;
        }
        const Value value = values_[begin & mask];
        begin_.store(begin + 1, std::memory_order_release);
        return value;
    }

private:
    static constexpr std::size_t mask = capacity - 1;

    std::array<Value, capacity> values_ = {};
    std::atomic<std::size_t> begin_ = 0;
    std::atomic<std::size_t> end_ = 0;
};

} // namespace deckmate
