// The fuzzers' seeds are what their folders call them.
#include "export/Export.h"

#include "support/Seeds.h"

#include <gtest/gtest.h>

namespace deckmate {
namespace {

using namespace test;

/// The first reason for which the bytes are no recording of the device.
std::string refusal(const Bytes& bytes) {
    const Export recording("take.wav", WavArray::copyOf(bytes));
    const WaveFileReader& reader = *recording.reader();
    if (recording.IsFileValid()) {
        return "accepted";
    }
    if (reader.isValidFile()) {
        return reader.getBextChunk() == nullptr ? "no-bext" : "other-originator";
    }
    if (bytes.size() < 48) {
        return "too-short";
    }
    if (!reader.chunks()) {
        return "not-riff-wave";
    }
    return reader.header().Subchunk1ID == 0 ? "no-format" : "no-data";
}

TEST(Refusals, EverySeedIsRefusedForItsReason) {
    for (const Seed& seed : seeds()) {
        EXPECT_EQ(refusal(seed.bytes), seed.reason) << seed.name;
    }
}

} // namespace
} // namespace deckmate
