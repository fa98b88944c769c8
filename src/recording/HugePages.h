// Large blocks in large pages: touching a gigabyte in 4 KiB pages costs more than decoding it.
#pragma once

#include <cstddef>

namespace deckmate {

/// Asks the kernel to back the whole pages inside `block` with huge ones. A hint: it changes no
/// content and has no failure that matters. Any thread.
void adviseHugePages(void* block, std::size_t length) noexcept;

} // namespace deckmate
