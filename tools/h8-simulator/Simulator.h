// The recorder in software: between a MIDI cable, a clock, commands and a trace.
#pragma once

#include "h8-simulator/Faults.h"
#include "h8-simulator/Recorder.h"
#include "platform/RunLoop.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <list>
#include <memory>
#include <random>
#include <string>
#include <string_view>

namespace deckmate::tools {

/// Traces every message, both ways, as one line:
///
///     12.345 <- F0 7E 00 06 01 F7   identity request
///
/// Seconds; `<-` from the computer, `->` to it, `--` a remark; hexadecimal; meaning.
///
/// Thread: main.
class Simulator {
public:
    struct Outside {
        std::function<bool(ByteView bytes)> send;             ///< NO when not all of them left
        std::function<void(const std::string& line)> print;   ///< without a line break
        std::function<Timer::Duration()> time;                ///< since the program's start
        std::function<void(const std::string& reason)> leave; ///< the program is to end
    };

    /// More messages than these don't wait for their delay; they are dropped.
    static constexpr std::size_t mostWaiting = 1000;

    Simulator(RunLoop& loop, Outside outside);

    RecorderState& state() { return recorder_.state(); }
    Faults& faults() { return faults_; }

    /// Bytes of the computer, in pieces of any size.
    void receive(ByteView bytes);
    /// Sends the card state unasked, now and then.
    void report();
    /// Zero ends it.
    void reportEvery(Timer::Duration interval);
    /// Sends messages that waited, if there are any.
    void sendWaiting(std::optional<Bundle> waiting);
    /// At once, as they are, whatever faults there are.
    void sendBytes(ByteView bytes, std::string_view what) const;
    /// Random bytes; the same ones after the same seed.
    void sendGarbage(std::size_t count);
    void seed(std::uint32_t seed) { random_.seed(seed); }
    /// Prints settings and faults, one remark for each, in the words of the commands.
    void printStatus() const;
    void remark(const std::string& text) const;
    void leave(const std::string& reason) const { outside_.leave(reason); }

private:
    struct Waiting {
        std::unique_ptr<Timer> timer;
        Bundle bundle;
    };

    void sendLater(Bundle bundle);
    void sendNow(const Bundle& bundle) const;
    void trace(std::string_view arrow, ByteView bytes, std::string_view meaning) const;
    void printTimed(const std::string& text) const;

    RunLoop& loop_;
    Outside outside_;
    Recorder recorder_;
    Faults faults_;
    std::mt19937 random_; // NOLINT(cert-msc51-cpp): meant to repeat itself
    std::unique_ptr<Timer> reports_;
    std::list<Waiting> waiting_;
};

} // namespace deckmate::tools
