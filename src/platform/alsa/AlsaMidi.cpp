#include "platform/alsa/AlsaMidi.h"

#include "platform/MidiBackend.h"
#include "platform/alsa/MidiPath.h"
#include "platform/alsa/SequencerClient.h"
#include "platform/alsa/SequencerState.h"
#include "platform/none/NoMidi.h"

#include <cstdlib>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include <sys/utsname.h>

namespace deckmate {

namespace {

bool systemUsesEventLists() {
    const char* const forced = std::getenv(midiPathVariable);
    utsname names = {};
    return usesEventLists(uname(&names) == 0 ? names.release : "", forced != nullptr ? forced : "");
}

class AlsaMidi final : public MidiBackend {
public:
    explicit AlsaMidi(std::unique_ptr<SequencerClient> sequencer)
        : sequencer_(std::move(sequencer)),
          state_(sequencer_->number(), [this] { return nextRef(); }) {
        sequencer_->start({
            .received = [this](SequencerAddress from, int port,
                               SequencerHandlers::Bytes bytes) { take(from, port, bytes); },
            .announced = [this](SequencerAnnouncement what,
                                SequencerAddress who) { follow(what, who); },
            .inputLost = [this] { startOver(); },
            .gone = [this] { apply(state_.rescanned({})); },
        });
        // Announcements first: who comes in between is seen twice, but not missed.
        if (const auto port = sequencer_->createPort("Announcements", inputCapabilities)) {
            sequencer_->connectToAnnouncements(*port);
        }
        state_.rescanned(sequencer_->scan());
    }

    bool hasEventLists() const override { return hasEventLists_; }
    std::size_t numberOfSources() const override { return state_.sources().size(); }
    std::size_t numberOfDestinations() const override { return state_.destinations().size(); }
    MidiRef source(std::size_t index) const override { return at(state_.sources(), index); }
    MidiRef destination(std::size_t index) const override {
        return at(state_.destinations(), index);
    }
    std::optional<std::string> displayName(MidiRef endpoint) const override {
        return state_.displayName(endpoint);
    }

protected:
    void named(std::string_view name) override { sequencer_->setName(std::string(name)); }

    MidiStatus openPort(MidiRef port, std::string_view name, Direction direction) override {
        const auto number = sequencer_->createPort(std::string(name), direction == Direction::input
                                                                          ? inputCapabilities
                                                                          : outputCapabilities);
        if (!number) {
            return midiNotAvailable;
        }
        numbers_[port] = *number;
        return 0;
    }

    void closePort(MidiRef port) override {
        sequencer_->deletePort(numbers_.at(port));
        numbers_.erase(port);
        std::erase_if(routes_, [port](const auto& route) { return route.first.first == port; });
    }

    MidiStatus connect(MidiRef port, MidiRef source) override {
        const auto address = state_.addressOf(source);
        return address && sequencer_->connectFrom(numbers_.at(port), *address) ? 0
                                                                               : midiNotAvailable;
    }

    void disconnect(MidiRef port, MidiRef source) override {
        if (const auto address = state_.addressOf(source)) {
            sequencer_->disconnectFrom(numbers_.at(port), *address);
        }
    }

    MidiStatus transmit(MidiRef port, MidiRef destination,
                        std::span<const std::uint8_t> bytes) override {
        const auto address = state_.addressOf(destination);
        if (!address) {
            return midiUnknownObject;
        }
        const int number = numbers_.at(port);
        auto route = routes_.find({port, destination});
        if (route == routes_.end()) {
            // A device takes nothing until it is connected to.
            if (!sequencer_->connectTo(number, *address)) {
                return midiSendFailed;
            }
            route = routes_.try_emplace({port, destination}).first;
        }
        return sequencer_->send(number, *address, bytes, route->second) ? 0 : midiSendFailed;
    }

    void flush(MidiRef /*endpoint*/) override { sequencer_->dropOutput(); }

private:
    // Ports that nobody else connects to anything.
    static constexpr unsigned inputCapabilities = sequencerPort::canWrite | sequencerPort::noExport;
    static constexpr unsigned outputCapabilities = sequencerPort::canRead | sequencerPort::noExport;

    using Route = std::pair<MidiRef, MidiRef>; ///< port and destination

    static MidiRef at(const std::vector<MidiRef>& refs, std::size_t index) {
        return index < refs.size() ? refs[index] : 0;
    }

    void take(SequencerAddress from, int number, SequencerHandlers::Bytes bytes) {
        const MidiRef source = state_.sourceAt(from);
        for (const auto& [port, portNumber] : numbers_) {
            if (portNumber == number) {
                received(port, source, bytes);
                return; // the reader may have changed the ports
            }
        }
    }

    void follow(SequencerAnnouncement what, SequencerAddress who) {
        if (who.client == sequencer_->number()) {
            return;
        }
        switch (what) {
        case SequencerAnnouncement::clientPresent:
            learnName(who.client);
            break;
        case SequencerAnnouncement::clientLeft:
            apply(state_.clientLeft(who.client));
            break;
        case SequencerAnnouncement::portPresent:
            if (auto port = sequencer_->portAt(who)) {
                learnName(who.client);
                apply(state_.portPresent(std::move(*port)));
            }
            break;
        case SequencerAnnouncement::portLeft:
            apply(state_.portLeft(who));
            break;
        }
    }

    void learnName(int client) {
        if (auto name = sequencer_->clientName(client)) {
            state_.clientNamed(client, std::move(*name));
        }
    }

    /// Who was there may have gone, and another one may have come to the same address: nothing of
    /// ours is connected to that one.
    void startOver() {
        inputLost();
        SequencerState::Changes changes;
        for (const SequencerAddress& replaced : lostConnections()) {
            append(changes, state_.portLeft(replaced));
        }
        append(changes, state_.rescanned(sequencer_->scan()));
        apply(changes);
    }

    std::set<SequencerAddress> lostConnections() const {
        std::set<SequencerAddress> lost;
        for (const MidiRef source : state_.sources()) {
            const auto address = state_.addressOf(source);
            for (const MidiRef port : portsOf(source)) {
                if (!sequencer_->isConnectedFrom(numbers_.at(port), *address)) {
                    lost.insert(*address);
                }
            }
        }
        for (const auto& [route, output] : routes_) {
            const auto address = state_.addressOf(route.second);
            if (address && !sequencer_->isConnectedTo(numbers_.at(route.first), *address)) {
                lost.insert(*address);
            }
        }
        return lost;
    }

    void apply(const SequencerState::Changes& changes) {
        forget(changes);
        tell(changes);
    }

    void forget(const SequencerState::Changes& changes) {
        for (const EndpointChange& change : changes) {
            if (change.notice == MidiNotice::objectRemoved) {
                forgetEndpoint(change.endpoint);
                std::erase_if(routes_, [&change](const auto& route) {
                    return route.first.second == change.endpoint;
                });
            }
        }
    }

    void tell(const SequencerState::Changes& changes) {
        for (const EndpointChange& change : changes) {
            notify(change.notice);
        }
    }

    bool hasEventLists_ = systemUsesEventLists();
    std::unique_ptr<SequencerClient> sequencer_;
    SequencerState state_;
    std::map<MidiRef, int> numbers_; ///< of our ports, in the sequencer
    std::map<Route, SequencerOutput> routes_;
};

} // namespace

std::unique_ptr<Midi> makeAlsaMidi(std::string* whyNot) {
    std::string error;
    auto sequencer = SequencerClient::open(error);
    if (whyNot != nullptr) {
        *whyNot = error;
    }
    if (!sequencer) {
        return makeNoMidi();
    }
    return std::make_unique<AlsaMidi>(std::move(sequencer));
}

} // namespace deckmate
