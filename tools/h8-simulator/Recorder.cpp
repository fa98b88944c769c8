#include "h8-simulator/Recorder.h"

#include "h8-simulator/CardSize.h"

#include <algorithm>
#include <utility>

namespace deckmate::tools {

std::vector<Recorder::Received> Recorder::receive(ByteView bytes) {
    std::vector<Received> all;
    for (StreamReader::Item& item : reader_.read(bytes)) {
        Bytes reply = item.isMessage ? replyTo(item.bytes) : Bytes();
        all.push_back({std::move(item), std::move(reply)});
    }
    return all;
}

Bytes Recorder::cardReport() const {
    Bytes parameters = {state_.card};
    parameters.insert(parameters.end(), state_.remaining.begin(), state_.remaining.end());
    for (const std::uint64_t size : {state_.used, state_.capacity}) {
        const Digits digits = digitsOf(size);
        parameters.insert(parameters.end(), digits.begin(), digits.end());
    }
    if (state_.card == 0) {
        std::fill(parameters.begin(), parameters.end(), std::uint8_t{0});
    }
    return makeMessage(Kind::cardReport, parameters);
}

Bytes Recorder::replyTo(ByteView message) {
    const Kind kind = kindOf(message);
    switch (kind) {
    case Kind::identityRequest: {
        Bytes identity(state_.deviceId.begin(), state_.deviceId.end());
        identity.insert(identity.end(), state_.version.begin(), state_.version.end());
        identity.push_back(0);
        return makeMessage(Kind::identityReply, identity);
    }
    case Kind::applicationStart:
        return makeMessage(Kind::applicationStartDone);
    case Kind::versionRequest:
        return makeMessage(Kind::versionReply, state_.version);
    case Kind::cardRequest:
        return cardReport();
    case Kind::batteryRequest:
        return makeMessage(Kind::batteryReply, {&state_.battery, 1});
    case Kind::powerOffRequest:
        return makeMessage(Kind::powerOffReply, {&state_.powerOff, 1});
    case Kind::setClock:
        std::ranges::copy(parametersOf(message), state_.clock.emplace().begin());
        return makeMessage(Kind::clockDone);
    case Kind::setBattery:
        state_.battery = parametersOf(message)[0];
        return makeMessage(Kind::batteryDone);
    case Kind::setPowerOff:
        state_.powerOff = parametersOf(message)[0];
        return makeMessage(Kind::powerOffDone);
    default:
        return {};
    }
}

} // namespace deckmate::tools
