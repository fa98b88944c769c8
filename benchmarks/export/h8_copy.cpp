// h8-copy SOURCE TARGET: what h8-decode does, with a copy of the samples in place of their
// decoding.
#include "export/BwfWriter.h"
#include "export/Export.h"

#include <cstdio>

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
    const auto size = static_cast<std::uint32_t>(reader.frameCount() * header.BlockAlign);
    if (!writer.reserveSamples(size)) {
        return 1;
    }
    writer.Write(reader.raw().bytes() + header.dataChunkPosition, size);
    writer.FixUpChunkSizes();
    return writer.Save2File(argv[2]) ? 0 : 1;
}
