#include "support/GuardedMemory.h"

#include <new>

#include <sys/mman.h>
#include <unistd.h>

namespace deckmate::test {

GuardedMemory::GuardedMemory(std::size_t size, Flush flush) {
    const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    const std::size_t inner = (size + page) / page * page;
    mappedSize_ = inner + 2 * page;
    mapping_ = mmap(nullptr, mappedSize_, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (mapping_ == MAP_FAILED) {
        throw std::bad_alloc();
    }
    auto* start = static_cast<std::uint8_t*>(mapping_) + page;
    if (mprotect(start, inner, PROT_READ | PROT_WRITE) != 0) {
        throw std::bad_alloc();
    }
    block_ = flush == Flush::atStart ? start : start + (inner - size);
}

GuardedMemory::~GuardedMemory() {
    munmap(mapping_, mappedSize_);
}

} // namespace deckmate::test
