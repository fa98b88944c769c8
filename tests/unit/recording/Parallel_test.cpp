#include "recording/Parallel.h"

#include <atomic>
#include <gtest/gtest.h>
#include <numeric>
#include <stdexcept>
#include <thread>
#include <vector>

namespace deckmate {
namespace {

TEST(Parallel, EveryPieceIsDoneOnce) {
    for (const std::size_t pieces : {0, 1, 2, 3, 1000}) {
        std::vector<std::atomic<int>> done(pieces);
        inParallel(pieces, [&](std::size_t piece) { ++done.at(piece); });
        for (const std::atomic<int>& count : done) {
            EXPECT_EQ(count, 1);
        }
    }
}

TEST(Parallel, OneThreadIsTheCallingOne) {
    const std::thread::id caller = std::this_thread::get_id();
    std::vector<std::size_t> order;
    inParallel(1, 4, [&](std::size_t piece) {
        EXPECT_EQ(std::this_thread::get_id(), caller);
        order.push_back(piece);
    });
    EXPECT_EQ(order, (std::vector<std::size_t>{0, 1, 2, 3}));
}

TEST(Parallel, PiecesAreFinishedInOrderWhateverTheyTake) {
    constexpr std::size_t threads = 4;
    constexpr std::size_t pieces = 1000;
    std::vector<std::size_t> inSlot(threads);
    std::vector<std::size_t> finished;
    inParallelAndInOrder(
        threads, pieces,
        [&](std::size_t piece, std::size_t slot) {
            for (std::size_t i = 0; i < piece * 7919 % 13; ++i) {
                std::this_thread::yield();
            }
            inSlot.at(slot) = piece;
        },
        [&](std::size_t piece, std::size_t slot) {
            EXPECT_EQ(inSlot.at(slot), piece); // nobody else had the slot in between
            finished.push_back(piece);
        });
    std::vector<std::size_t> expected(pieces);
    std::iota(expected.begin(), expected.end(), 0U);
    EXPECT_EQ(finished, expected);
}

// Each piece waits for the other one to have begun.
TEST(Parallel, PiecesRunAtTheSameTime) {
    std::atomic<int> begun = 0;
    inParallel(2, 2, [&](std::size_t) {
        ++begun;
        while (begun < 2) {
            std::this_thread::yield();
        }
    });
    EXPECT_EQ(begun, 2);
}

TEST(Parallel, WhatTheCallerThrowsComesOutAfterTheOthersHaveEnded) {
    const std::thread::id caller = std::this_thread::get_id();
    std::atomic<int> running = 0;
    const auto work = [&](std::size_t) {
        ++running;
        const bool isCaller = std::this_thread::get_id() == caller;
        --running;
        if (isCaller) {
            throw std::runtime_error("enough");
        }
    };
    // The others may have taken all pieces before the caller came to one.
    try {
        inParallel(2, 100000, work);
    } catch (const std::runtime_error&) {
        SUCCEED();
    }
    EXPECT_EQ(running, 0);
}

} // namespace
} // namespace deckmate
