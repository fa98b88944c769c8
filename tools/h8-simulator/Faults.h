// What goes wrong on the way from the recorder to the computer, as ordered.
#pragma once

#include "h8-simulator/Protocol.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace deckmate::tools {

struct Outgoing {
    Bytes bytes;
    std::string meaning; ///< and what was done to it
};

/// Messages that leave together.
using Bundle = std::vector<Outgoing>;

class Faults {
public:
    /// The requests to come are counted from 1. None of these outlasts a call of reset().
    void silence(std::uint64_t request) { silent_.insert(request + requests_); }
    void silenceAll() { isSilent_ = true; }
    void endSilence();
    /// The reply gets so many bytes more, zeros, or fewer, before its F7.
    void changeLength(std::uint64_t request, std::int64_t delta) {
        deltas_[request + requests_] = delta;
    }
    void setTwice(bool isTwice) { isTwice_ = isTwice; }
    /// While merging, each reply waits for the message after it. The end of it gives what waits.
    std::optional<Bundle> setMerging(bool isMerging);
    /// 0 for whole messages.
    void setPieceSize(std::size_t size) { pieceSize_ = size; }
    void setDelay(std::chrono::milliseconds delay) { delay_ = delay; }
    /// Nothing goes wrong any more. Gives what waits.
    std::optional<Bundle> reset();

    /// What is to be sent now that a request has this reply; it may be nothing.
    std::vector<Bundle> reply(const Bytes& message);
    /// Likewise for what the recorder sends by itself: never silenced, changed or kept waiting.
    Bundle report(const Bytes& message);
    std::vector<Bytes> piecesOf(ByteView bytes) const;
    std::chrono::milliseconds delay() const { return delay_; }

    bool isHolding() const { return held_.has_value(); }
    std::uint64_t requests() const { return requests_; }
    /// In the words of the commands.
    std::string description() const;

private:
    Bundle withHeld(Outgoing message);

    std::uint64_t requests_ = 0; ///< so far
    std::set<std::uint64_t> silent_;
    bool isSilent_ = false;
    std::map<std::uint64_t, std::int64_t> deltas_;
    bool isTwice_ = false;
    bool isMerging_ = false;
    std::optional<Outgoing> held_;
    std::size_t pieceSize_ = 0;
    std::chrono::milliseconds delay_{0};
};

} // namespace deckmate::tools
