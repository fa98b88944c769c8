// h8-copy SOURCE TARGET: what h8-decode does, with a copy of the samples in place of their
// decoding.
#include "export/BwfWriter.h"
#include "export/Export.h"
#include "recording/Parallel.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <vector>

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fputs("usage: h8-copy SOURCE TARGET\n", stderr);
        return 2;
    }
    const deckmate::Export recording(argv[1]);
    if (!recording.IsFileValid()) {
        return 1;
    }
    const deckmate::WaveFileReader& reader = *recording.reader();
    const deckmate::WaveHeader header = reader.header();
    const deckmate::BextChunkInfo bext = recording.buildBextInfo();
    deckmate::BwfWriter writer(&reader, bext, true);
    const std::uint64_t size = reader.frameCount() * header.BlockAlign;
    writer.setTarget(argv[2], {});
    if (!writer.expectSamples(size)) {
        return 1;
    }
    constexpr std::uint64_t pieceSize = std::uint64_t{200} * 2560 * 6;
    const std::size_t threads = deckmate::usefulThreads();
    const auto sizeOf = [&](std::size_t piece) {
        return static_cast<std::uint32_t>(std::min(pieceSize, size - piece * pieceSize));
    };
    std::vector<std::vector<std::uint8_t>> pieces(threads, std::vector<std::uint8_t>(pieceSize));
    const std::uint8_t* samples = reader.raw().bytes() + header.dataChunkPosition;
    deckmate::inParallelAndInOrder(
        threads, (size + pieceSize - 1) / pieceSize,
        [&](std::size_t piece, std::size_t slot) {
            std::memcpy(pieces[slot].data(), samples + piece * pieceSize, sizeOf(piece));
        },
        [&](std::size_t piece, std::size_t slot) {
            writer.Write(pieces[slot].data(), sizeOf(piece));
        });
    writer.FixUpChunkSizes();
    return writer.Save2File(argv[2]) ? 0 : 1;
}
