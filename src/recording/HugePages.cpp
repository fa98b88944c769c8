#include "recording/HugePages.h"

#include <cstdint>

#include <sys/mman.h>
#include <unistd.h>

namespace deckmate {

namespace {

// Below this a block can hardly contain an aligned 2 MiB page.
constexpr std::size_t worthAdvising = std::size_t{4} << 20;

} // namespace

void adviseHugePages(void* block, std::size_t length) noexcept {
    if (block == nullptr || length < worthAdvising) {
        return;
    }
    const auto page = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
    const auto start = reinterpret_cast<std::uintptr_t>(block);
    const std::uintptr_t skipped = (page - start % page) % page;
    const std::size_t whole = (length - skipped) / page * page;
    madvise(static_cast<std::byte*>(block) + skipped, whole, MADV_HUGEPAGE);
}

} // namespace deckmate
