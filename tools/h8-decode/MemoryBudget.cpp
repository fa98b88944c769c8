#include "MemoryBudget.h"

#include <algorithm>

#include <unistd.h>

namespace deckmate::tools {

MemoryBudget MemoryBudget::ofThisMachine() {
    const auto pages = static_cast<std::uint64_t>(std::max(0L, sysconf(_SC_PHYS_PAGES)));
    const auto pageSize = static_cast<std::uint64_t>(std::max(0L, sysconf(_SC_PAGESIZE)));
    return MemoryBudget(pages * pageSize / 2);
}

MemoryBudget::Share::Share(MemoryBudget& budget, std::uint64_t bytes)
    : budget_(budget), bytes_(std::min(bytes, budget.whole_)) {
    std::unique_lock guard(budget_.lock_);
    budget_.given_.wait(guard, [this] { return budget_.free_ >= bytes_; });
    budget_.free_ -= bytes_;
}

MemoryBudget::Share::~Share() {
    const std::lock_guard guard(budget_.lock_);
    budget_.free_ += bytes_;
    budget_.given_.notify_all();
}

} // namespace deckmate::tools
