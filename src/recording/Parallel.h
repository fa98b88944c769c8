// Work on large blocks by several threads at the same time.
#pragma once

#include <cstddef>
#include <functional>

namespace deckmate {

/// Calls `work` once for each piece 0..pieces-1 and returns when all are done. The calling thread
/// takes part and is the only one where no others are to be had. Pieces begin in their order.
/// `work` must be safe for different pieces at the same time, and must not throw on other threads
/// than the calling one. Thread: any.
void inParallel(std::size_t pieces, const std::function<void(std::size_t piece)>& work);

/// The same on up to `threads` threads, the calling one among them.
void inParallel(std::size_t threads, std::size_t pieces,
                const std::function<void(std::size_t piece)>& work);

/// How many threads moving bytes is worth on this machine.
std::size_t usefulThreads();

/// Calls `work` as above, and once it has returned `finish` for the same piece, for one piece at a
/// time and in the order of the pieces. Pieces in hand at the same time have different slots, below
/// `threads`: what a piece needs between the two can be kept by slot. Neither may throw.
void inParallelAndInOrder(std::size_t threads, std::size_t pieces,
                          const std::function<void(std::size_t piece, std::size_t slot)>& work,
                          const std::function<void(std::size_t piece, std::size_t slot)>& finish);

} // namespace deckmate
