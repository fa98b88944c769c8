// Nanoseconds per frame of everything that samples pass through, on a block that fits into the
// first-level cache, as in an export.
#include "recording/SampleKernels.h"
#include "recording/WaveFileReader.h"

#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstring>
#include <random>
#include <string>
#include <vector>

namespace {

using namespace deckmate;

constexpr std::size_t blockFrames = 2560;
constexpr std::uint32_t rate = 48000;
constexpr std::uint32_t recordedFrames = 10 * rate;

void reportFrames(benchmark::State& state, std::size_t framesPerIteration) {
    const auto frames =
        static_cast<double>(state.iterations()) * static_cast<double>(framesPerIteration);
    state.counters["s/frame"] =
        benchmark::Counter(frames, benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

std::vector<float> noise(std::size_t count) {
    std::mt19937 random(1);
    std::uniform_real_distribution<float> level(-0.5F, 0.5F);
    std::vector<float> samples(count);
    for (float& sample : samples) {
        sample = level(random);
    }
    return samples;
}

/// A `fmt ` and a `data` chunk of 24-bit stereo noise.
std::shared_ptr<WaveFileReader> recording() {
    constexpr std::uint32_t dataSize = recordedFrames * 6;
    const std::uint32_t words[] = {0x46464952, 36 + dataSize, 0x45564157, 0x20746D66,
                                   16,         0x00020001,    rate,       rate * 6,
                                   0x00180006, 0x61746164,    dataSize};
    std::vector<std::uint8_t> file(sizeof words + dataSize);
    std::memcpy(file.data(), words, sizeof words);
    std::mt19937 random(2);
    for (std::size_t i = sizeof words; i < file.size(); ++i) {
        file[i] = static_cast<std::uint8_t>(random());
    }
    auto reader = WaveFileReader::readFromData(file);
    reader->setIsBoMSFormat(true);
    return reader;
}

// ---- The kernels, in each implementation

template <class Work>
void addKernel(const std::string& name, const SampleKernels* kernels, Work work) {
    benchmark::RegisterBenchmark((name + "/" + kernels->name).c_str(),
                                 [kernels, work](benchmark::State& state) {
                                     std::vector<float> samples = noise(2 * blockFrames);
                                     std::vector<std::uint8_t> bytes(6 * blockFrames, 0x35);
                                     for (auto _ : state) {
                                         work(*kernels, samples.data(), bytes.data());
                                         benchmark::ClobberMemory();
                                     }
                                     reportFrames(state, blockFrames);
                                 });
}

void addKernels(const SampleKernels* kernels) {
    if (kernels == nullptr) {
        return;
    }
    addKernel("unpackPcm24", kernels,
              [](const SampleKernels& k, float* samples, std::uint8_t* bytes) {
                  k.unpackPcm24(bytes, samples, 2 * blockFrames);
              });
    // A side level of 0 and a divisor of 1 keep the samples as they are from round to round.
    addKernel("decodeMidSide", kernels, [](const SampleKernels& k, float* samples, std::uint8_t*) {
        k.decodeMidSide(samples, blockFrames, 0.0F);
    });
    addKernel("divide", kernels, [](const SampleKernels& k, float* samples, std::uint8_t*) {
        k.divide(samples, blockFrames, 1.0F, 1.0F);
    });
    addKernel("raisePeaks", kernels, [](const SampleKernels& k, float* samples, std::uint8_t*) {
        float left = 0;
        float right = 0;
        k.raisePeaks(samples, blockFrames, &left, &right);
        benchmark::DoNotOptimize(left + right);
    });
    addKernel("packPcm24", kernels,
              [](const SampleKernels& k, float* samples, std::uint8_t* bytes) {
                  k.packPcm24(samples, bytes, 2 * blockFrames);
              });
}

[[maybe_unused]] const bool areKernelsAdded = [] {
    addKernels(&SampleKernels::portable());
    addKernels(SampleKernels::avx2());
    return true;
}();

// ---- The operations of the reader

void COM_SetCvtMSSample(benchmark::State& state) {
    std::vector<float> samples = noise(2 * blockFrames);
    for (auto _ : state) {
        for (std::size_t i = 0; i < samples.size(); i += 2) {
            WaveFileReader::COM_SetCvtMSSample(24, &samples[i], 0);
        }
        benchmark::ClobberMemory();
    }
    reportFrames(state, blockFrames);
}
BENCHMARK(COM_SetCvtMSSample);

void COM_MSDecode(benchmark::State& state) {
    std::vector<float> samples = noise(2 * blockFrames);
    for (auto _ : state) {
        WaveFileReader::COM_MSDecode(24, samples.data(), samples.size(), 0);
        benchmark::ClobberMemory();
    }
    reportFrames(state, blockFrames);
}
BENCHMARK(COM_MSDecode);

void COM_MSDecodeForPlaying(benchmark::State& state) {
    std::vector<float> samples = noise(2 * blockFrames);
    const AdjustAngleInfo info{.curAngle = 0, .prevAngle = state.range(0)};
    for (auto _ : state) {
        WaveFileReader::COM_MSDecodeForPlaying(24, samples.data(), blockFrames, &info);
        benchmark::ClobberMemory();
    }
    reportFrames(state, blockFrames);
}
BENCHMARK(COM_MSDecodeForPlaying)->ArgName("from")->Arg(0)->Arg(150);

void COM_AdjustdB(benchmark::State& state) {
    std::vector<float> samples = noise(2 * blockFrames);
    for (auto _ : state) {
        WaveFileReader::COM_AdjustdB(24, samples.data(), samples.size(), 0.0, 0.0);
        benchmark::ClobberMemory();
    }
    reportFrames(state, blockFrames);
}
BENCHMARK(COM_AdjustdB);

// Noise of this level stays far from denormals for as long as a benchmark runs at 0 dB.
void COM_AdjustdBForPlaying(benchmark::State& state) {
    std::vector<float> samples = noise(2 * blockFrames);
    const AdjustDBInfo info;
    for (auto _ : state) {
        WaveFileReader::COM_AdjustdBForPlaying(24, samples.data(), blockFrames, &info);
        benchmark::ClobberMemory();
    }
    reportFrames(state, blockFrames);
}
BENCHMARK(COM_AdjustdBForPlaying);

void readNextSample(benchmark::State& state) {
    const auto reader = recording();
    float left = 0;
    float right = 0;
    for (auto _ : state) {
        reader->beginReadSample();
        while (reader->readNextSample(&left, &right)) {
            benchmark::DoNotOptimize(left);
            benchmark::DoNotOptimize(right);
        }
    }
    reportFrames(state, recordedFrames);
}
BENCHMARK(readNextSample);

void readSampleBlock(benchmark::State& state) {
    const auto reader = recording();
    std::vector<float> block(2 * blockFrames);
    for (auto _ : state) {
        reader->beginReadSample();
        while (reader->readSampleBlock(block.data(), blockFrames) > 0) {
            benchmark::ClobberMemory();
        }
    }
    reportFrames(state, recordedFrames);
}
BENCHMARK(readSampleBlock);

// A thirtieth of a second, as the meters ask for it.
void getSampleLevelMeterFrom(benchmark::State& state) {
    const auto reader = recording();
    float left = 0;
    float right = 0;
    for (auto _ : state) {
        reader->getSampleLevelMeterFrom(1.0, 1.0 + 1.0 / 30, &left, &right, 3.0, 120.0);
        benchmark::DoNotOptimize(left + right);
    }
    reportFrames(state, rate / 30);
}
BENCHMARK(getSampleLevelMeterFrom);

} // namespace
