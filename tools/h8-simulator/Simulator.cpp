#include "h8-simulator/Simulator.h"

#include <array>
#include <cstdio>
#include <utility>

namespace deckmate::tools {

Simulator::Simulator(RunLoop& loop, Outside outside)
    : loop_(loop), outside_(std::move(outside)), reports_(loop.makeTimer()) {}

void Simulator::receive(ByteView bytes) {
    for (const auto& [item, reply] : recorder_.receive(bytes)) {
        trace("<-", item.bytes, item.isMessage ? meaningOf(item.bytes) : "no whole message");
        if (reply.empty()) {
            continue;
        }
        std::vector<Bundle> bundles = faults_.reply(reply);
        if (bundles.empty()) {
            remark(faults_.isHolding() ? "the reply waits for the next message" : "no reply");
        }
        for (Bundle& bundle : bundles) {
            sendLater(std::move(bundle));
        }
    }
}

void Simulator::report() {
    sendLater(faults_.report(recorder_.cardReport()));
}

void Simulator::reportEvery(Timer::Duration interval) {
    if (interval == Timer::Duration::zero()) {
        reports_->stop();
    } else {
        reports_->startRepeating(interval, [this] { report(); });
    }
}

void Simulator::sendWaiting(std::optional<Bundle> waiting) {
    if (waiting) {
        sendLater(std::move(*waiting));
    }
}

void Simulator::sendBytes(ByteView bytes, std::string_view what) const {
    trace("->", bytes, what);
    if (!outside_.send(bytes)) {
        remark("not sent");
    }
}

void Simulator::sendGarbage(std::size_t count) {
    Bytes bytes(count);
    for (std::uint8_t& byte : bytes) {
        byte = static_cast<std::uint8_t>(random_() & 0xFF);
    }
    sendBytes(bytes, "garbage");
}

void Simulator::printStatus() const {
    const RecorderState& state = recorder_.state();
    const auto& [hours, minutes, seconds] = state.remaining;
    std::array<char, 16> remaining = {};
    std::snprintf(remaining.data(), remaining.size(), "%02d:%02d:%02d", hours, minutes, seconds);
    remark("id " + hexOf(state.deviceId));
    remark("version " + versionText(state.version));
    remark("card " + std::to_string(state.card));
    remark("remaining " + std::string(remaining.data()));
    remark("used " + std::to_string(state.used));
    remark("max " + std::to_string(state.capacity));
    remark("battery " + std::to_string(state.battery));
    remark("power-off " + std::to_string(state.powerOff));
    remark("clock " + (state.clock ? clockText(*state.clock) : "not set"));
    remark("requests " + std::to_string(faults_.requests()));
    remark("faults " + faults_.description());
}

void Simulator::remark(const std::string& text) const {
    printTimed("-- " + text);
}

void Simulator::sendLater(Bundle bundle) {
    if (faults_.delay().count() == 0) {
        sendNow(bundle);
        return;
    }
    if (waiting_.size() >= mostWaiting) {
        remark("dropped: too many wait");
        return;
    }
    const auto place = waiting_.insert(waiting_.end(), {loop_.makeTimer(), std::move(bundle)});
    place->timer->startOnce(faults_.delay(), [this, place] {
        const Bundle due = std::move(place->bundle);
        waiting_.erase(place);
        sendNow(due);
    });
}

void Simulator::sendNow(const Bundle& bundle) const {
    Bytes bytes;
    for (const Outgoing& message : bundle) {
        bytes.insert(bytes.end(), message.bytes.begin(), message.bytes.end());
    }
    const std::vector<Bytes> pieces = faults_.piecesOf(bytes);
    const std::string cut =
        pieces.size() > 1 ? ", in " + std::to_string(pieces.size()) + " pieces" : "";
    for (const Outgoing& message : bundle) {
        trace("->", message.bytes, message.meaning + cut);
    }
    bool hasLeft = true;
    for (const Bytes& piece : pieces) {
        hasLeft = outside_.send(piece) && hasLeft;
    }
    if (!hasLeft) {
        remark("not sent");
    }
}

void Simulator::trace(std::string_view arrow, ByteView bytes, std::string_view meaning) const {
    printTimed(std::string(arrow) + " " + hexOf(bytes) + "   " + std::string(meaning));
}

void Simulator::printTimed(const std::string& text) const {
    const auto milliseconds =
        std::chrono::floor<std::chrono::milliseconds>(outside_.time()).count();
    std::array<char, 32> stamp = {};
    std::snprintf(stamp.data(), stamp.size(), "%lld.%03lld ",
                  static_cast<long long>(milliseconds / 1000),
                  static_cast<long long>(milliseconds % 1000));
    outside_.print(stamp.data() + text);
}

} // namespace deckmate::tools
