// Mid/side decoding, gains, ramps and the peak scan of WaveFileReader.
#include "recording/SampleKernels.h"
#include "recording/SideLevelCoef.h"
#include "recording/WaveFileReader.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace deckmate {

namespace {

constexpr std::uint64_t gainRampFrames = 960;

double linear(double dB) {
    return std::pow(10.0, dB / 20.0);
}

/// The ramp's ends take their decibels through single precision before the power.
double rampEnd(std::int64_t dB) {
    return std::pow(10.0, static_cast<double>(static_cast<float>(dB) / 20.0F));
}

float usable(float divisor) {
    return divisor == 0.0F ? 1.0F : divisor;
}

/// Frames that `sampleLength` floats touch: an odd count reaches into the pair behind it.
std::uint64_t framesOfFloats(std::uint64_t sampleLength) {
    return sampleLength / 2 + sampleLength % 2;
}

void decodeAt(float* pair, float level) {
    SampleKernels::portable().decodeMidSide(pair, 1, level);
}

/// Cut toward zero; what no offset can be (NaN, negative) is 0, what is too large for one is 2^63.
std::uint64_t truncatedOffset(double value) {
    if (!(value > 0.0)) {
        return 0;
    }
    return value < 0x1p63 ? static_cast<std::uint64_t>(value) : std::uint64_t{1} << 63;
}

} // namespace

float WaveFileReader::COM_SetCvtdBSample(int /*bits*/, float sample, float divisor) {
    return sample / usable(divisor);
}

void WaveFileReader::COM_AdjustdB(int /*bits*/, float* sample, std::uint64_t sampleLength,
                                  double dBL, double dBR) {
    const auto left = static_cast<float>(linear(dBL));
    const auto right = static_cast<float>(linear(dBR));
    SampleKernels::active().divide(sample, framesOfFloats(sampleLength), usable(left),
                                   usable(right));
}

void WaveFileReader::COM_AdjustdBForPlaying(int bits, float* sample, std::uint64_t sampleLength,
                                            const AdjustDBInfo* info) {
    const double start = rampEnd(info->prevGain);
    const double end = rampEnd(info->curGain);
    const std::uint64_t ramp = std::min(sampleLength, gainRampFrames);
    for (std::uint64_t k = 0; k < ramp; ++k) {
        const double divisor =
            start + static_cast<double>(k) * (end - start) / static_cast<double>(ramp);
        const auto rounded = static_cast<float>(divisor);
        sample[2 * k] = COM_SetCvtdBSample(bits, sample[2 * k], rounded);
        sample[2 * k + 1] = COM_SetCvtdBSample(bits, sample[2 * k + 1], rounded);
    }
    const float settled = usable(static_cast<float>(end));
    SampleKernels::active().divide(sample + 2 * ramp, sampleLength - ramp, settled, settled);
}

void WaveFileReader::COM_SetCvtMSSample(int /*bits*/, float* sample, int angle) {
    decodeAt(sample, sideLevel(angle));
}

void WaveFileReader::COM_MSDecode(int /*bits*/, float* sample, std::uint64_t sampleLength,
                                  int angle) {
    SampleKernels::active().decodeMidSide(sample, framesOfFloats(sampleLength), sideLevel(angle));
}

void WaveFileReader::COM_MSDecodeForPlaying(int /*bits*/, float* sample, std::uint64_t sampleLength,
                                            const AdjustAngleInfo* info) {
    const std::int64_t target = info->curAngle;
    std::int64_t angle = info->prevAngle;
    std::uint64_t k = 0;
    for (; k < sampleLength && angle != target; ++k) {
        angle += target < angle ? -1 : 1;
        decodeAt(sample + 2 * k, sideLevel(angle));
    }
    SampleKernels::active().decodeMidSide(sample + 2 * k, sampleLength - k, sideLevel(target));
}

int WaveFileReader::truncatedAngle(double angle) {
    if (!(angle > 0.0)) {
        return 0;
    }
    return angle < maxAngle ? static_cast<int>(angle) : maxAngle;
}

void WaveFileReader::getSampleLevelMeterFrom(double from, double to, float* chanelLeft,
                                             float* chanelRight, double gain, double angle) {
    *chanelLeft = 0.0F;
    *chanelRight = 0.0F;
    const std::uint64_t frame = frameBytes();
    if (frame == 0) {
        return;
    }
    const auto bytesAt = [&](double seconds) {
        return seconds * header_.SampleRate * static_cast<double>(frame);
    };
    std::uint64_t start = truncatedOffset(bytesAt(from));
    if (start % frame != 0) {
        start = start / frame * frame + frame;
    }
    readDataIdx_ = start + header_.dataChunkPosition;
    const std::uint64_t end = std::min<std::uint64_t>(
        truncatedOffset(bytesAt(to) + header_.dataChunkPosition), header_.dataChunkLength);

    constexpr std::size_t blockFrames = 256;
    std::array<float, 2 * blockFrames> block = {};
    while (readDataIdx_ < end) {
        const std::uint64_t wanted = (end - readDataIdx_ + frame - 1) / frame;
        const std::size_t frames =
            readSampleBlock(block.data(), std::min<std::uint64_t>(wanted, blockFrames));
        if (frames == 0) {
            break;
        }
        if (isBoMSFormat_) {
            COM_MSDecode(header_.BitsPerSample, block.data(), 2 * frames, truncatedAngle(angle));
        }
        COM_AdjustdB(header_.BitsPerSample, block.data(), 2 * frames, gain, gain);
        SampleKernels::active().raisePeaks(block.data(), frames, chanelLeft, chanelRight);
    }
}

} // namespace deckmate
