#include "support/Seeds.h"

#include <algorithm>
#include <initializer_list>
#include <utility>

namespace deckmate::test {

namespace {

// The steps of an input, as the fuzzer counts them.
enum Step : std::uint8_t { bytes = 0, words = 1, wait = 2, plug = 3, battery = 5, answer = 7 };

Bytes step(Step kind, const Bytes& payload = {}) {
    return Bytes{kind, static_cast<std::uint8_t>(payload.size())} + payload;
}

/// A second, in steps of 20 ms.
Bytes settle() {
    return step(wait, {50});
}

Bytes connected() {
    return step(plug) + settle();
}

Bytes answered(std::size_t count) {
    Bytes steps = connected();
    for (std::size_t i = 0; i < count; ++i) {
        steps = std::move(steps) + step(answer, {static_cast<std::uint8_t>(i)});
    }
    return steps;
}

Bytes eventWords(std::initializer_list<std::uint32_t> list) {
    Bytes payload;
    for (const std::uint32_t word : list) {
        payload = std::move(payload) + le32(word);
    }
    return step(words, payload);
}

} // namespace

std::vector<Seed> deviceSeeds() {
    std::vector<Seed> seeds;
    const auto add = [&](const char* reason, const std::string& name, const Bytes& steps) {
        // By bytes and by events.
        seeds.push_back({reason, name + "-bytes", Bytes{0} + steps});
        seeds.push_back({reason, name + "-events", Bytes{1} + steps});
    };
    add("accepted", "connection", answered(7));
    add("accepted", "card-report", answered(7) + step(answer, {3}));
    add("accepted", "battery-type", answered(7) + step(battery, {2}) + step(answer, {7}));
    add("ignored", "another-reply", connected() + step(answer, {5}));
    add("ignored", "too-late", connected() + step(wait, {110}) + step(answer, {0}));
    add("ignored", "no-end", connected() + step(bytes, Bytes(250, 0x11)));
    add("ignored", "unplugged", answered(3) + step(plug) + step(plug) + settle());
    add("ignored", "short-messages", connected() + eventWords({0x20903C64, 0x10F80000}));
    add("ignored", "four-words", connected() + eventWords({0x50000000, 1, 2, 3, 0x30010100, 0}));
    add("ignored", "start-and-end",
        connected() + eventWords({0x30160102, 0x03040506}) + eventWords({0x30320708, 0}));
    return seeds;
}

} // namespace deckmate::test
