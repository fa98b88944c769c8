#include "platform/alsa/SequencerState.h"

#include <algorithm>
#include <utility>

namespace deckmate {

namespace {

constexpr int systemClient = 0;

bool hasAll(unsigned capabilities, unsigned wanted) {
    return (capabilities & wanted) == wanted;
}

} // namespace

void append(SequencerState::Changes& changes, const SequencerState::Changes& later) {
    changes.insert(changes.end(), later.begin(), later.end());
}

SequencerState::SequencerState(int ownClient, std::function<MidiRef()> nextRef)
    : ownClient_(ownClient), nextRef_(std::move(nextRef)) {}

void SequencerState::clientNamed(int client, std::string name) {
    clientNames_[client] = std::move(name);
}

SequencerState::Changes SequencerState::clientLeft(int client) {
    Changes changes;
    std::vector<SequencerAddress> gone;
    for (const auto& [address, port] : ports_) {
        if (address.client == client) {
            gone.push_back(address);
        }
    }
    for (const SequencerAddress& address : gone) {
        append(changes, portLeft(address));
    }
    clientNames_.erase(client);
    return changes;
}

SequencerState::Changes SequencerState::portPresent(SequencerPort port) {
    using namespace sequencerPort;
    const unsigned capabilities = port.capabilities;
    const bool counts = port.address.client != ownClient_ && port.address.client != systemClient &&
                        !hasAll(capabilities, noExport);
    return update(port.address, std::move(port.name),
                  counts && hasAll(capabilities, canRead | canSubscribeRead),
                  counts && hasAll(capabilities, canWrite | canSubscribeWrite));
}

SequencerState::Changes SequencerState::portLeft(SequencerAddress address) {
    return update(address, {}, false, false);
}

SequencerState::Changes SequencerState::rescanned(std::vector<SequencerListing> all) {
    std::map<SequencerAddress, std::string> present;
    for (const SequencerListing& listing : all) {
        for (const SequencerPort& port : listing.ports) {
            present[port.address] = port.name;
        }
    }
    std::vector<SequencerAddress> gone;
    for (const auto& [address, port] : ports_) {
        const auto now = present.find(address);
        if (now == present.end() || now->second != port.name) {
            gone.push_back(address);
        }
    }
    Changes changes;
    for (const SequencerAddress& address : gone) {
        append(changes, portLeft(address));
    }
    clientNames_.clear();
    for (SequencerListing& listing : all) {
        clientNames_[listing.client] = std::move(listing.name);
        for (SequencerPort& port : listing.ports) {
            append(changes, portPresent(std::move(port)));
        }
    }
    std::stable_partition(changes.begin(), changes.end(), [](const EndpointChange& change) {
        return change.notice == MidiNotice::objectRemoved;
    });
    return changes;
}

SequencerState::Changes SequencerState::update(SequencerAddress address, std::string name,
                                               bool isSource, bool isDestination) {
    Port port;
    if (const auto known = ports_.find(address); known != ports_.end()) {
        port = known->second;
    }
    Changes removed;
    Changes added;
    const auto change = [&](MidiRef& endpoint, bool isPresent, std::vector<MidiRef>& list) {
        if (endpoint != 0 && !isPresent) {
            removed.push_back({MidiNotice::objectRemoved, endpoint});
            std::erase(list, endpoint);
            endpoint = 0;
        } else if (endpoint == 0 && isPresent) {
            endpoint = nextRef_();
            added.push_back({MidiNotice::objectAdded, endpoint});
            list.push_back(endpoint);
        }
    };
    change(port.source, isSource, sources_);
    change(port.destination, isDestination, destinations_);
    if (isSource || isDestination) {
        port.name = std::move(name);
        ports_[address] = std::move(port);
    } else {
        ports_.erase(address);
    }
    append(removed, added);
    return removed;
}

SequencerState::Ports::const_iterator SequencerState::portOf(MidiRef endpoint) const {
    return std::find_if(ports_.begin(), ports_.end(), [endpoint](const auto& entry) {
        return endpoint != 0 &&
               (entry.second.source == endpoint || entry.second.destination == endpoint);
    });
}

std::optional<SequencerAddress> SequencerState::addressOf(MidiRef endpoint) const {
    const auto found = portOf(endpoint);
    return found != ports_.end() ? std::optional(found->first) : std::nullopt;
}

std::optional<std::string> SequencerState::displayName(MidiRef endpoint) const {
    const auto found = portOf(endpoint);
    if (found == ports_.end()) {
        return std::nullopt;
    }
    const std::string& name = found->second.name;
    const auto client = clientNames_.find(found->first.client);
    if (client == clientNames_.end() || name.starts_with(client->second)) {
        return name;
    }
    return client->second + " " + name;
}

MidiRef SequencerState::sourceAt(SequencerAddress address) const {
    const auto found = ports_.find(address);
    return found != ports_.end() ? found->second.source : 0;
}

} // namespace deckmate
