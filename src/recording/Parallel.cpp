#include "recording/Parallel.h"

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <mutex>
#include <new>
#include <system_error>
#include <thread>
#include <vector>

namespace deckmate {

namespace {

// Moving bytes is bound by memory: a few cores use all of its bandwidth.
constexpr std::size_t mostThreads = 4;

} // namespace

std::size_t usefulThreads() {
    const std::size_t cores = std::max(1U, std::thread::hardware_concurrency());
    return std::min(cores, mostThreads);
}

void inParallel(std::size_t pieces, const std::function<void(std::size_t piece)>& work) {
    inParallel(usefulThreads(), pieces, work);
}

void inParallel(std::size_t threads, std::size_t pieces,
                const std::function<void(std::size_t piece)>& work) {
    const std::size_t wanted = std::min(threads, pieces);
    std::atomic<std::size_t> next = 0;
    const auto takePieces = [&] {
        for (std::size_t piece = next++; piece < pieces; piece = next++) {
            work(piece);
        }
    };
    std::vector<std::jthread> helpers; // joined whatever happens, before what they use goes
    try {
        helpers.reserve(wanted);
        while (helpers.size() + 1 < wanted) {
            helpers.emplace_back(takePieces);
        }
    } catch (const std::system_error&) {
        // No more threads to be had: those that run do all the work.
    } catch (const std::bad_alloc&) {
        // Nor memory for them.
    }
    takePieces();
}

void inParallelAndInOrder(std::size_t threads, std::size_t pieces,
                          const std::function<void(std::size_t piece, std::size_t slot)>& work,
                          const std::function<void(std::size_t piece, std::size_t slot)>& finish) {
    std::mutex lock;
    std::condition_variable someFinished;
    std::size_t next = 0;
    inParallel(threads, pieces, [&](std::size_t piece) {
        // Begun and finished in order, the unfinished pieces follow each other, fewer than threads.
        const std::size_t slot = piece % threads;
        work(piece, slot);
        std::unique_lock guard(lock);
        someFinished.wait(guard, [&] { return next == piece; });
        finish(piece, slot);
        ++next;
        someFinished.notify_all();
    });
}

} // namespace deckmate
