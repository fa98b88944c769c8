// Any bytes as a recording that is opened and exported in every way, up to the finished file.
#include "export/BwfWriter.h"
#include "export/Export.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

namespace {

using namespace deckmate;

void require(bool isTrue) {
    if (!isTrue) {
        std::abort();
    }
}

/// The whole export but for the disk.
void exportInMemory(Export& recording, bool is24bit) {
    BextChunkInfo bext = recording.buildBextInfo();
    BwfWriter writer(recording.reader().get(), bext, is24bit);
    const std::size_t headerSize = writer.data().size();
    recording.editAndWriteSample(writer);
    writer.FixUpChunkSizes();
    const std::uint64_t sampleBytes = recording.isExport24Bit() ? 3 : 4;
    require(writer.dataLength() == recording.reader()->frameCount() * 2 * sampleBytes);
    require(writer.data().size() == headerSize + writer.dataLength());
    require(std::memcmp(writer.data().data(), "RIFF", 4) == 0);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) {
        return 0;
    }
    Export recording("/fuzz/take.wav", WavArray::copyOf({data, size}));
    if (recording.IsFileValid()) {
        recording.setAngle(data[size - 1]);
        recording.setGain(static_cast<std::int8_t>(data[0]));
        exportInMemory(recording, true);
        recording.setNormalize(true);
        exportInMemory(recording, false);
    }
    recording.cleanUp();
    return 0;
}
