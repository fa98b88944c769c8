#include "h8-simulator/Faults.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace deckmate::tools {

namespace {

void changeBy(std::int64_t delta, Outgoing& message) {
    const std::uint8_t end = message.bytes.back();
    message.bytes.pop_back();
    const auto size = static_cast<std::int64_t>(message.bytes.size());
    message.bytes.resize(static_cast<std::size_t>(std::max<std::int64_t>(size + delta, 1)));
    message.bytes.push_back(end);
    message.meaning += ", " + std::to_string(std::abs(delta)) +
                       (std::abs(delta) == 1 ? " byte " : " bytes ") +
                       (delta < 0 ? "shorter" : "longer");
}

} // namespace

void Faults::endSilence() {
    isSilent_ = false;
    silent_.clear();
}

std::optional<Bundle> Faults::setMerging(bool isMerging) {
    isMerging_ = isMerging;
    if (isMerging || !held_) {
        return std::nullopt;
    }
    Bundle waiting = {std::move(*held_)};
    held_.reset();
    return waiting;
}

std::optional<Bundle> Faults::reset() {
    std::optional<Bundle> waiting = setMerging(false);
    const std::uint64_t requests = requests_;
    *this = Faults();
    requests_ = requests;
    return waiting;
}

std::vector<Bundle> Faults::reply(const Bytes& message) {
    ++requests_;
    const bool isSilenced = silent_.erase(requests_) != 0;
    const auto change = deltas_.extract(requests_);
    if (isSilenced || isSilent_) {
        return {};
    }
    Outgoing outgoing = {message, meaningOf(message)};
    if (!change.empty()) {
        changeBy(change.mapped(), outgoing);
    }
    std::vector<Bundle> bundles;
    for (int copies = isTwice_ ? 2 : 1; copies > 0; --copies) {
        if (isMerging_ && !held_) {
            held_ = outgoing;
        } else {
            bundles.push_back(withHeld(outgoing));
        }
    }
    return bundles;
}

Bundle Faults::report(const Bytes& message) {
    return withHeld({message, meaningOf(message)});
}

Bundle Faults::withHeld(Outgoing message) {
    Bundle bundle;
    if (held_) {
        bundle.push_back(std::move(*held_));
        held_.reset();
        message.meaning += ", with the one before";
    }
    bundle.push_back(std::move(message));
    return bundle;
}

std::vector<Bytes> Faults::piecesOf(ByteView bytes) const {
    const std::size_t size = pieceSize_ == 0 ? bytes.size() : pieceSize_;
    std::vector<Bytes> pieces;
    while (!bytes.empty()) {
        const ByteView piece = bytes.first(std::min(size, bytes.size()));
        pieces.emplace_back(piece.begin(), piece.end());
        bytes = bytes.subspan(piece.size());
    }
    return pieces;
}

std::string Faults::description() const {
    std::string text;
    const auto add = [&](const std::string& fault) { text += (text.empty() ? "" : ", ") + fault; };
    if (isSilent_) {
        add("silent all");
    }
    for (const std::uint64_t request : silent_) {
        add("silent " + std::to_string(request - requests_));
    }
    for (const auto& [request, delta] : deltas_) {
        add("length " + std::to_string(request - requests_) + " " + std::to_string(delta));
    }
    if (isTwice_) {
        add("twice");
    }
    if (isMerging_) {
        add("merge");
    }
    if (pieceSize_ != 0) {
        add("split " + std::to_string(pieceSize_));
    }
    if (delay_.count() != 0) {
        add("delay " + std::to_string(delay_.count()));
    }
    return text.empty() ? "none" : text;
}

} // namespace deckmate::tools
