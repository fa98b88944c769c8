// Keeps files that are decoded at the same time from taking more memory than there is.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <mutex>

namespace deckmate::tools {

/// A number of bytes from which everybody takes a share for a while. Any thread.
class MemoryBudget {
public:
    explicit MemoryBudget(std::uint64_t bytes) : whole_(bytes), free_(bytes) {}
    /// Half of the memory, which leaves room for the files that the system keeps in it.
    static MemoryBudget ofThisMachine();

    /// Waits until the bytes are free and gives them back at the end. Whoever wants more than the
    /// whole budget gets all of it.
    class Share {
    public:
        Share(MemoryBudget& budget, std::uint64_t bytes);
        ~Share();
        Share(const Share&) = delete;
        Share& operator=(const Share&) = delete;
        Share(Share&&) = delete;
        Share& operator=(Share&&) = delete;

    private:
        MemoryBudget& budget_;
        std::uint64_t bytes_;
    };

private:
    const std::uint64_t whole_;
    std::uint64_t free_;
    std::mutex lock_;
    std::condition_variable given_;
};

} // namespace deckmate::tools
