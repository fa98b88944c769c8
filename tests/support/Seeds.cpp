#include "support/Seeds.h"

#include <limits>
#include <string_view>

namespace deckmate::test {

namespace {

const Bytes fewSamples = pcm24({0, 1 << 20, -(1 << 20), 0x7FFFFF, -0x800000, 12345});
const Bytes format = chunk("fmt ", formatBody({}));
const Bytes bext = chunk("bext", bextBody({}));

Bytes ramp(std::size_t bytes) {
    Bytes samples;
    for (std::size_t i = 0; i < bytes; ++i) {
        samples.push_back(static_cast<std::uint8_t>(i * 37));
    }
    return samples;
}

Bytes without(Bytes bytes, std::size_t fromEnd) {
    bytes.resize(bytes.size() - fromEnd);
    return bytes;
}

void addAccepted(std::vector<Seed>& seeds) {
    const auto add = [&](std::string name, Bytes bytes) {
        seeds.push_back({"accepted", std::move(name), std::move(bytes)});
    };
    add("raw-24", recording(fewSamples));
    add("plain-24", recording(fewSamples, {}, {.history = plainHistory}));
    add("raw-16", recording(ramp(64), {.bits = 16}));
    add("raw-32-integer", recording(ramp(64), {.bits = 32}));
    add("float",
        recording(floats({0.5F, -0.5F, 1e38F, -1e-45F, std::numeric_limits<float>::infinity(),
                          std::numeric_limits<float>::quiet_NaN()}),
                  {.tag = 3, .bits = 32}));
    add("mono", recording(ramp(30), {.channels = 1}));
    add("three-channels", recording(ramp(90), {.channels = 3}));
    add("65535-channels", recording(ramp(300), {.channels = 65535, .bits = 24}));
    add("no-channels", recording(ramp(30), {.channels = 0}));
    add("8-bit", recording(ramp(30), {.bits = 8}));
    add("no-bits", recording(ramp(30), {.bits = 0}));
    add("65535-bits", recording(ramp(30), {.bits = 65535}));
    add("rate-0", recording(fewSamples, {.rate = 0}));
    add("rate-highest", recording(fewSamples, {.rate = 0xFFFFFFFF}));
    add("two-blocks", recording(ramp(std::size_t{2561} * 6)));
    add("no-samples", recording({}));
    add("part-of-a-frame", recording(ramp(5)));
    add("data-first", riff(chunk("data", fewSamples) + bext + format));
    add("data-twice", riff(format + chunk("data", fewSamples) + bext + chunk("data", ramp(12))));
    add("data-cut-short", riff(bext + format + chunk("data", fewSamples, 5000)));
    add("data-size-wraps", riff(bext + format + chunk("data", fewSamples, 0xFFFFFFFF)));
    add("data-size-negative", riff(bext + format + chunk("data", fewSamples, 0x80000000)));
    add("format-cut-short",
        without(riff(chunk("data", fewSamples) + bext + format, 0x7FFFFFFF), 9));
    add("texts-without-end", recording(fewSamples, {}, {.description = std::string(256, '\xE9')}));
    add("bext-up-to-the-name", riff(chunk("bext", without(bextBody({}), 602 + 55 - 263)) + format +
                                    chunk("data", fewSamples)));
    add("odd-history", recording(fewSamples, {}, {.history = "MSRAW=ON;"}));
    add("unknown-chunks", riff(chunk("JUNK", ramp(28)) + bext + chunk("LIST", ramp(7)) + format +
                               chunk("data", fewSamples)));
}

} // namespace

std::vector<Seed> seeds() {
    std::vector<Seed> seeds;
    addAccepted(seeds);
    const auto add = [&](std::string reason, std::string name, Bytes bytes) {
        seeds.push_back({std::move(reason), std::move(name), std::move(bytes)});
    };
    const Bytes good = recording(fewSamples);
    add("too-short", "one-byte", {'R'});
    add("too-short", "47-bytes", Bytes(good.begin(), good.begin() + 47));
    add("not-riff-wave", "rifx", text("RIFX") + Bytes(good.begin() + 4, good.end()));
    add("not-riff-wave", "rf64", text("RF64") + Bytes(good.begin() + 4, good.end()));
    add("not-riff-wave", "avi", text("RIFF") + le32(100) + text("AVI ") + zeros(60));
    add("not-riff-wave", "text",
        text("A text that somebody has named like a recording, by mistake."));
    add("no-format", "no-format", riff(bext + chunk("data", fewSamples)));
    add("no-format", "riff-size-0", riff(bext + format + chunk("data", fewSamples), 0));
    add("no-format", "riff-size-wraps",
        riff(bext + format + chunk("data", fewSamples), 0xFFFFFFF8));
    add("no-data", "no-data", riff(bext + format));
    add("no-data", "format-size-stands-still",
        riff(bext + chunk("fmt ", formatBody({}), 0xFFFFFFF8)));
    add("no-data", "format-size-goes-back", riff(bext + chunk("fmt ", formatBody({}), 0xFFFFFFF0)));
    add("no-data", "bext-with-pad-byte",
        riff(chunk("fmt ", formatBody({})) + chunk("bext", bextBody({.history = "MSRAW=ON;"})) +
             zeros(1) + chunk("data", fewSamples)));
    add("no-bext", "no-bext", riff(format + chunk("data", fewSamples)));
    add("no-bext", "bext-beyond-the-file",
        riff(format + chunk("data", fewSamples) + chunk("bext", zeros(600), 602)));
    add("other-originator", "empty", recording(fewSamples, {}, {.originator = ""}));
    add("other-originator", "another", recording(fewSamples, {}, {.originator = "OTHER 4"}));
    add("other-originator", "bext-empty",
        riff(chunk("bext", {}) + format + chunk("data", fewSamples)));
    add("other-originator", "bext-one-byte-short",
        riff(chunk("bext", without(bextBody({}), 602 + 55 - 262)) + format +
             chunk("data", fewSamples)));
    return seeds;
}

} // namespace deckmate::test
