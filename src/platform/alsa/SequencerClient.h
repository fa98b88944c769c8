// A client of the ALSA sequencer, read on the main loop.
#pragma once

#include "platform/RunLoop.h"
#include "platform/alsa/SequencerState.h"

#include <alsa/asoundlib.h>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <vector>

namespace deckmate {

/// What the sequencer announces of others, and of ourselves.
enum class SequencerAnnouncement { clientPresent, clientLeft, portPresent, portLeft };

/// Called from the main loop. They may destroy the client.
struct SequencerHandlers {
    using Bytes = std::span<const std::uint8_t>;

    /// Bytes of one event: a whole message, or a piece of System Exclusive.
    std::function<void(SequencerAddress source, int port, Bytes bytes)> received;
    /// Of a client, the port is 0.
    std::function<void(SequencerAnnouncement what, SequencerAddress who)> announced;
    /// Events that had arrived were dropped, announcements among them.
    std::function<void()> inputLost;
    /// The sequencer has gone for good. Nothing comes any more, and all operations fail.
    std::function<void()> gone;
};

/// Where a stream of sent bytes is inside its messages.
class SequencerOutput {
public:
    SequencerOutput();

private:
    friend class SequencerClient;

    struct Free {
        void operator()(snd_midi_event_t* encoder) const { snd_midi_event_free(encoder); }
    };

    bool isInSysEx_ = false;
    std::unique_ptr<snd_midi_event_t, Free> encoder_; ///< of all other messages
};

/// The only place where the sequencer's functions are called. Nothing waits. Thread: main.
class SequencerClient {
public:
    /// Null where there is no sequencer or it can't be used; `error` then says why.
    static std::unique_ptr<SequencerClient> open(std::string& error);
    explicit SequencerClient(snd_seq_t* sequencer);
    ~SequencerClient();
    SequencerClient(const SequencerClient&) = delete;
    SequencerClient& operator=(const SequencerClient&) = delete;
    SequencerClient(SequencerClient&&) = delete;
    SequencerClient& operator=(SequencerClient&&) = delete;

    /// From now on what arrives is handed over.
    void start(SequencerHandlers handlers);
    int number() const;
    void setName(const std::string& name);

    /// The new port's number, which wasn't in use for the last two hundred ports; nothing if there
    /// is no port to be had. `capabilities` are the sequencer's.
    std::optional<int> createPort(const std::string& name, unsigned capabilities);
    void deletePort(int port);
    /// The port receives what is announced.
    bool connectToAnnouncements(int port);
    /// The port receives what the other one sends. It may be connected already.
    bool connectFrom(int port, SequencerAddress source);
    void disconnectFrom(int port, SequencerAddress source);
    /// The other one can be sent to: a device is opened by that. It may be connected already.
    bool connectTo(int port, SequencerAddress destination);
    /// A connection ends when either port goes, even if another port takes its number.
    bool isConnectedFrom(int port, SequencerAddress source) const;
    bool isConnectedTo(int port, SequencerAddress destination) const;

    /// All who are connected to the port.
    static constexpr SequencerAddress subscribers = {SND_SEQ_ADDRESS_SUBSCRIBERS,
                                                     SND_SEQ_ADDRESS_UNKNOWN};
    /// Sends bytes of any messages; NO when not all of them left.
    bool send(int port, SequencerAddress destination, std::span<const std::uint8_t> bytes,
              SequencerOutput& output);
    /// Sends the bytes as one event of System Exclusive, whatever they are. Likewise.
    bool sendPiece(int port, SequencerAddress destination, std::span<const std::uint8_t> bytes);
    void dropOutput();

    /// All clients and ports, in the order of their numbers.
    std::vector<SequencerListing> scan() const;
    std::optional<std::string> clientName(int client) const;
    std::optional<SequencerPort> portAt(SequencerAddress address) const;

private:
    struct Close {
        void operator()(snd_seq_t* sequencer) const { snd_seq_close(sequencer); }
    };
    struct Free {
        void operator()(snd_midi_event_t* decoder) const { snd_midi_event_free(decoder); }
    };

    void pump();
    void handle(const snd_seq_event_t& event, const SequencerHandlers& handlers);
    std::vector<std::uint8_t> bytesOf(const snd_seq_event_t& event);
    bool hasFailed() const;
    void leave();
    bool put(snd_seq_event_t& event, int port, SequencerAddress destination);
    bool hasConnection(SequencerAddress sender, SequencerAddress receiver) const;

    std::unique_ptr<snd_seq_t, Close> sequencer_;
    std::unique_ptr<snd_midi_event_t, Free> decoder_;
    int descriptor_ = -1;
    int lastPort_ = -1;
    std::set<int> ports_; ///< older kernels would make a second port of the same number
    bool isGone_ = false;
    std::shared_ptr<const SequencerHandlers> handlers_; ///< shared with a call to them
    std::unique_ptr<DescriptorWatch> watch_;
    std::shared_ptr<const bool> exists_ = std::make_shared<const bool>(true);
};

} // namespace deckmate
