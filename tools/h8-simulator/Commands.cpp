#include "h8-simulator/Commands.h"

#include "common/CommandLine.h"
#include "h8-simulator/CardSize.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <cstdint>
#include <optional>
#include <sstream>
#include <system_error>
#include <utility>
#include <vector>

namespace deckmate::tools {

namespace {

using Words = std::vector<std::string>;
using Action = std::function<void(Simulator& simulator)>;

constexpr std::uint64_t mostRequests = 1'000'000;
constexpr std::uint64_t mostBytes = 1'000'000;
constexpr std::uint64_t longestDelay = 3'600'000;
constexpr double shortestInterval = 0.001;
constexpr double longestInterval = 86'400;
constexpr std::size_t longestError = 160;

std::uint64_t whole(const char* what, const std::string& text, std::uint64_t smallest,
                    std::uint64_t largest) {
    return wholeNumberWithin(what, text, smallest, largest);
}

/// Beyond 127 it is no data byte of MIDI any more, which is a fault that may be wanted.
std::uint8_t byteValue(const char* what, const std::string& text) {
    return static_cast<std::uint8_t>(whole(what, text, 0, 0xFF));
}

/// Pairs of digits, with spaces between them or without.
std::optional<Bytes> parseHex(const Words& words) {
    Bytes bytes;
    for (const std::string& word : words) {
        if (word.size() % 2 != 0) {
            return std::nullopt;
        }
        for (const char* at = word.data(); at != word.data() + word.size(); at += 2) {
            std::uint8_t byte = 0;
            const auto [end, error] = std::from_chars(at, at + 2, byte, 16);
            if (error != std::errc() || end != at + 2) {
                return std::nullopt;
            }
            bytes.push_back(byte);
        }
    }
    return bytes.empty() ? std::nullopt : std::optional(std::move(bytes));
}

template <std::size_t count>
std::optional<std::array<std::uint8_t, count>> exactly(const std::optional<Bytes>& bytes) {
    if (!bytes || bytes->size() != count) {
        return std::nullopt;
    }
    std::array<std::uint8_t, count> array = {};
    std::ranges::copy(*bytes, array.begin());
    return array;
}

// Each of these gives null for words that are none of its command's.

Action card(const Words& words) {
    if (words.size() != 1) {
        return nullptr;
    }
    const std::string& state = words[0];
    const auto value = static_cast<std::uint8_t>(state == "in"    ? 1
                                                 : state == "out" ? 0
                                                                  : byteValue("card", state));
    return [value](Simulator& simulator) { simulator.state().card = value; };
}

Action size(const Words& words, std::uint64_t RecorderState::*field) {
    std::string text;
    for (const std::string& word : words) {
        text += (text.empty() ? "" : " ") + word;
    }
    const std::optional<std::uint64_t> bytes = parseSize(text);
    if (!bytes) {
        return nullptr;
    }
    return [=](Simulator& simulator) { simulator.state().*field = *bytes; };
}

Action used(const Words& words) {
    return size(words, &RecorderState::used);
}

Action capacity(const Words& words) {
    return size(words, &RecorderState::capacity);
}

Action remaining(const Words& words) {
    std::array<std::uint8_t, 3> time = {};
    constexpr std::array<std::uint64_t, 3> largest = {127, 59, 59};
    if (words.size() != 1 || std::ranges::count(words[0], ':') != 2) {
        return nullptr;
    }
    std::istringstream parts(words[0]);
    for (std::size_t i = 0; i < time.size(); ++i) {
        std::string part;
        std::getline(parts, part, ':');
        time[i] = static_cast<std::uint8_t>(whole("remaining", part, 0, largest[i]));
    }
    return [time](Simulator& simulator) { simulator.state().remaining = time; };
}

Action report(const Words& words) {
    if (words.empty()) {
        return [](Simulator& simulator) { simulator.report(); };
    }
    if (words == Words{"off"}) {
        return [](Simulator& simulator) { simulator.reportEvery(Timer::Duration::zero()); };
    }
    if (words.size() != 2 || words[0] != "every") {
        return nullptr;
    }
    const double seconds =
        numberWithin("report every", words[1], shortestInterval, longestInterval);
    const auto interval =
        std::chrono::round<Timer::Duration>(std::chrono::duration<double>(seconds));
    return [interval](Simulator& simulator) { simulator.reportEvery(interval); };
}

Action version(const Words& words) {
    std::optional<std::array<std::uint8_t, 4>> value = exactly<4>(parseHex(words));
    if (!value && words.size() == 1) {
        value = exactly<4>(Bytes(words[0].begin(), words[0].end()));
    }
    if (!value) {
        return nullptr;
    }
    return [value](Simulator& simulator) { simulator.state().version = *value; };
}

Action deviceId(const Words& words) {
    const auto value = exactly<4>(parseHex(words));
    if (!value) {
        return nullptr;
    }
    return [value](Simulator& simulator) { simulator.state().deviceId = *value; };
}

Action battery(const Words& words) {
    if (words.size() != 1) {
        return nullptr;
    }
    const std::uint8_t value = byteValue("battery", words[0]);
    return [value](Simulator& simulator) { simulator.state().battery = value; };
}

Action powerOff(const Words& words) {
    if (words.size() != 1) {
        return nullptr;
    }
    const std::uint8_t value = byteValue("power-off", words[0]);
    return [value](Simulator& simulator) { simulator.state().powerOff = value; };
}

Action silent(const Words& words) {
    if (words == Words{"all"}) {
        return [](Simulator& simulator) { simulator.faults().silenceAll(); };
    }
    if (words == Words{"off"}) {
        return [](Simulator& simulator) { simulator.faults().endSilence(); };
    }
    if (words.size() != 1) {
        return nullptr;
    }
    const std::uint64_t request = whole("silent", words[0], 1, mostRequests);
    return [request](Simulator& simulator) { simulator.faults().silence(request); };
}

Action length(const Words& words) {
    if (words.size() != 2) {
        return nullptr;
    }
    const std::uint64_t request = whole("length", words[0], 1, mostRequests);
    const bool isShorter = words[1].starts_with('-');
    const auto amount = static_cast<std::int64_t>(
        whole("length", isShorter ? words[1].substr(1) : words[1], 0, mostBytes));
    return [request, delta = isShorter ? -amount : amount](Simulator& simulator) {
        simulator.faults().changeLength(request, delta);
    };
}

Action split(const Words& words) {
    if (words.size() != 1) {
        return nullptr;
    }
    const std::uint64_t pieceSize = whole("split", words[0], 0, mostBytes);
    return [pieceSize](Simulator& simulator) { simulator.faults().setPieceSize(pieceSize); };
}

/// Nothing, "on" or "off".
std::optional<bool> isOn(const Words& words) {
    if (words.empty() || words == Words{"on"}) {
        return true;
    }
    return words == Words{"off"} ? std::optional(false) : std::nullopt;
}

Action merge(const Words& words) {
    const std::optional<bool> value = isOn(words);
    if (!value) {
        return nullptr;
    }
    return [value](Simulator& simulator) {
        simulator.sendWaiting(simulator.faults().setMerging(*value));
    };
}

Action twice(const Words& words) {
    const std::optional<bool> value = isOn(words);
    if (!value) {
        return nullptr;
    }
    return [value](Simulator& simulator) { simulator.faults().setTwice(*value); };
}

Action delay(const Words& words) {
    if (words.size() != 1) {
        return nullptr;
    }
    const std::chrono::milliseconds time(whole("delay", words[0], 0, longestDelay));
    return [time](Simulator& simulator) { simulator.faults().setDelay(time); };
}

Action faults(const Words& words) {
    if (words != Words{"off"}) {
        return nullptr;
    }
    return [](Simulator& simulator) { simulator.sendWaiting(simulator.faults().reset()); };
}

Action garbage(const Words& words) {
    if (words.size() != 1) {
        return nullptr;
    }
    const std::uint64_t count = whole("garbage", words[0], 1, mostBytes);
    return [count](Simulator& simulator) { simulator.sendGarbage(count); };
}

Action seed(const Words& words) {
    if (words.size() != 1) {
        return nullptr;
    }
    const auto value = static_cast<std::uint32_t>(whole("seed", words[0], 0, UINT32_MAX));
    return [value](Simulator& simulator) { simulator.seed(value); };
}

Action send(const Words& words) {
    const std::optional<Bytes> bytes = parseHex(words);
    if (!bytes) {
        return nullptr;
    }
    return [bytes](Simulator& simulator) { simulator.sendBytes(*bytes, meaningOf(*bytes)); };
}

Action in(const Words& words) {
    const std::optional<Bytes> bytes = parseHex(words);
    if (!bytes) {
        return nullptr;
    }
    return [bytes](Simulator& simulator) { simulator.receive(*bytes); };
}

Action status(const Words& words) {
    if (!words.empty()) {
        return nullptr;
    }
    return [](Simulator& simulator) { simulator.printStatus(); };
}

Action help(const Words& words) {
    if (!words.empty()) {
        return nullptr;
    }
    return [](Simulator& simulator) {
        std::istringstream lines(commandHelp());
        for (std::string line; std::getline(lines, line);) {
            simulator.remark(line);
        }
    };
}

Action quit(const Words& words) {
    if (!words.empty()) {
        return nullptr;
    }
    return [](Simulator& simulator) { simulator.leave("quit"); };
}

struct Entry {
    const char* name;
    const char* usage;
    const char* effect;
    Action (*parse)(const Words& words);
};

constexpr std::array entries = {
    Entry{"card", "card in|out|N", "a memory card is in it, or none", card},
    Entry{"used", "used SIZE", "used space of the card, like 7.5GB or 512 MB", used},
    Entry{"max", "max SIZE", "capacity of the card", capacity},
    Entry{"remaining", "remaining HH:MM:SS", "recording time left", remaining},
    Entry{"version", "version XXXX", "four characters, or eight hex digits", version},
    Entry{"id", "id HEX", "the four bytes of the identity", deviceId},
    Entry{"battery", "battery N", "battery type", battery},
    Entry{"power-off", "power-off N", "automatic power-off", powerOff},
    Entry{"report", "report [every SECONDS|off]", "send the card state unasked", report},
    Entry{"silent", "silent N|all|off", "don't answer the Nth request from now", silent},
    Entry{"length", "length N DELTA", "answer it with so many bytes more or fewer", length},
    Entry{"split", "split N", "send in pieces of N bytes; 0 ends it", split},
    Entry{"merge", "merge [off]", "send each reply with the message after it", merge},
    Entry{"twice", "twice [off]", "send each reply two times", twice},
    Entry{"delay", "delay MILLISECONDS", "send so much later", delay},
    Entry{"faults", "faults off", "end all of these", faults},
    Entry{"send", "send HEX...", "send these bytes now", send},
    Entry{"garbage", "garbage N", "send N random bytes now", garbage},
    Entry{"seed", "seed N", "begin the random bytes anew", seed},
    Entry{"in", "in HEX...", "take these bytes as if the computer had sent them", in},
    Entry{"status", "status", "print all settings", status},
    Entry{"help", "help", "print this list", help},
    Entry{"quit", "quit", "end", quit},
};

/// What can be shown on a terminal, and no more of it than is of use.
std::string printable(std::string text) {
    std::ranges::replace_if(
        text, [](char character) { return character < ' ' || character > '~'; }, '?');
    if (text.size() > longestError) {
        text.replace(longestError, std::string::npos, "...");
    }
    return text;
}

Words wordsOf(std::string_view line) {
    constexpr std::string_view spaces = " \t\r";
    Words words;
    while (true) {
        line.remove_prefix(std::min(line.find_first_not_of(spaces), line.size()));
        if (line.empty()) {
            return words;
        }
        const std::size_t size = std::min(line.find_first_of(spaces), line.size());
        words.emplace_back(line.substr(0, size));
        line.remove_prefix(size);
    }
}

} // namespace

ParsedCommand parseCommand(std::string_view line) {
    Words words = wordsOf(line);
    if (words.empty() || words[0].starts_with('#')) {
        return {[](Simulator& /*simulator*/) {}, ""};
    }
    const auto* entry = std::find_if(entries.begin(), entries.end(),
                                     [&](const Entry& one) { return words[0] == one.name; });
    if (entry == entries.end()) {
        return {nullptr, printable("unknown command, help lists them: " + words[0])};
    }
    words.erase(words.begin());
    try {
        if (Action action = entry->parse(words)) {
            return {std::move(action), ""};
        }
    } catch (const CLI::ValidationError& error) {
        return {nullptr, printable(error.what())};
    }
    return {nullptr, std::string("usage: ") + entry->usage};
}

std::string commandHelp() {
    constexpr std::size_t column = 28;
    std::string text;
    for (const Entry& entry : entries) {
        std::string line = entry.usage;
        line.resize(column, ' ');
        text += line + entry.effect + "\n";
    }
    return text;
}

} // namespace deckmate::tools
