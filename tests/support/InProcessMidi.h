// MIDI devices that a test plays by hand.
#pragma once

#include "platform/MidiBackend.h"
#include "support/Bytes.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace deckmate::test {

class InProcessMidi;

/// Which endpoints a device has.
enum class Ends { both, source, destination };

/// A device in the hands of a test. Stays readable after it was removed, for as long as its
/// InProcessMidi.
class InProcessDevice {
public:
    using Words = std::vector<std::uint32_t>;

    InProcessDevice(InProcessMidi& midi, std::string name, MidiRef source, MidiRef destination);

    // What was sent to it.

    /// Each message: System Exclusive from F0 to F7, however it was split; others as they came.
    std::vector<Bytes> messages;
    /// Called for each message, after it was added to `messages`. May answer.
    std::function<void(const Bytes& message)> onMessage;
    /// Calls of send() that reached it.
    std::size_t sends = 0;
    std::vector<Bytes> packets;            ///< data of each packet of a packet list
    std::vector<Words> events;             ///< words of each packet of an event list
    std::vector<std::uint64_t> timeStamps; ///< of each packet of either kind
    std::vector<MidiProtocol> protocols;   ///< of each event list

    // What it sends, to all ports that are connected to it. Each at once, or when the run loop gets
    // there, if it is still plugged in by then.

    /// A piece of any size, also of no whole message: one list for each port.
    void answer(const Bytes& bytes);
    void answerLater(const Bytes& bytes);
    /// One packet list with these packets, up to 256 bytes each. Ports for event lists get nothing.
    void answerPackets(const std::vector<Bytes>& packetData);
    void answerPacketsLater(const std::vector<Bytes>& packetData);
    /// One event list with packets of these words, up to 64 each, of any content. Ports for packet
    /// lists get nothing.
    void answerEvents(const std::vector<Words>& packetWords);
    void answerEventsLater(const std::vector<Words>& packetWords);

    bool hasName = true; ///< else its endpoints can't tell theirs
    bool isPluggedIn() const { return isPluggedIn_; }
    const std::string& name() const { return name_; }
    MidiRef source() const { return source_; }           ///< 0 if it has none
    MidiRef destination() const { return destination_; } ///< likewise

private:
    friend class InProcessMidi;

    void take(std::span<const std::uint8_t> bytes);
    void expectPluggedIn() const;
    void later(std::function<void()> action);

    InProcessMidi& midi_;
    std::string name_;
    MidiRef source_;
    MidiRef destination_;
    bool isPluggedIn_ = true;
    Bytes unfinished_; ///< of a System Exclusive message
    /// Expires with this, before what is still to be done later.
    std::shared_ptr<const bool> exists_ = std::make_shared<const bool>(true);
};

/// The MIDI system of a test. Needs a RunLoop, which brings the notices.
///
///     ManualRunLoop loop;
///     InProcessMidi midi(false);
///     InProcessDevice& recorder = midi.addDevice("H8 ORLO MIDI 1");
///     recorder.onMessage = [&](const Bytes& request) { recorder.answerLater(replyTo(request)); };
///     loop.runPending();
///
/// Misuse ends the program with a line that names it: calls on another thread than the one that
/// made this, references that were never given out, a device that is removed twice or answers
/// although it is gone or has no source, packets and event packets that are too long.
class InProcessMidi final : public MidiBackend {
public:
    explicit InProcessMidi(bool hasEventLists);
    ~InProcessMidi() override;
    InProcessMidi(const InProcessMidi&) = delete;
    InProcessMidi& operator=(const InProcessMidi&) = delete;
    InProcessMidi(InProcessMidi&&) = delete;
    InProcessMidi& operator=(InProcessMidi&&) = delete;

    /// Plugs a device in, behind those that are there. A notice comes for each endpoint.
    InProcessDevice& addDevice(const std::string& displayName, Ends ends = Ends::both);
    /// Pulls it out. Likewise.
    void removeDevice(InProcessDevice& device);
    /// Has every client hear this when the run loop gets there, whatever happened.
    void notifyLater(MidiNotice notice);

    bool canCreateInputPorts = true;    ///< else creating one fails
    bool canCreateOutputPorts = true;   ///< likewise
    bool canSend = true;                ///< else sending fails, and nothing arrives
    std::vector<std::string> portNames; ///< of all that were ever opened
    std::size_t disconnections = 0;     ///< of sources that were there, by disconnectSource()
    std::size_t flushes = 0;            ///< of endpoints that were there
    std::string clientName;             ///< of the client that was created last
    std::size_t ports() const { return numberOfPorts(); }
    std::size_t connections() const { return numberOfConnections(); }

    bool hasEventLists() const override { return hasEventLists_; }
    std::size_t numberOfSources() const override { return sources_.size(); }
    std::size_t numberOfDestinations() const override { return destinations_.size(); }
    MidiRef source(std::size_t index) const override;
    MidiRef destination(std::size_t index) const override;
    std::optional<std::string> displayName(MidiRef endpoint) const override;
    MidiRef createClient(std::string_view name, NoticeReader reader) override;
    MidiStatus connectSource(MidiRef port, MidiRef source) override;
    MidiStatus disconnectSource(MidiRef port, MidiRef source) override;
    MidiStatus disposePort(MidiRef port) override;
    MidiStatus send(MidiRef port, MidiRef destination, const MIDIPacketList& packets) override;
    MidiStatus send(MidiRef port, MidiRef destination, const MIDIEventList& events) override;
    MidiStatus flushOutput(MidiRef endpoint) override;

protected:
    void named(std::string_view name) override { clientName = name; }
    MidiStatus openPort(MidiRef port, std::string_view name, Direction direction) override;
    MidiStatus transmit(MidiRef port, MidiRef destination,
                        std::span<const std::uint8_t> bytes) override;
    void disconnect(MidiRef port, MidiRef source) override;
    void flush(MidiRef endpoint) override;

private:
    friend class InProcessDevice;

    void expectUse(const char* what, std::initializer_list<MidiRef> refs) const;
    InProcessDevice* deviceAt(MidiRef endpoint) const;

    bool hasEventLists_;
    std::thread::id thread_ = std::this_thread::get_id();
    std::vector<std::unique_ptr<InProcessDevice>> devices_; ///< all that ever were
    std::vector<MidiRef> sources_;
    std::vector<MidiRef> destinations_;
    std::shared_ptr<const bool> exists_ = std::make_shared<const bool>(true);
};

} // namespace deckmate::test
