// Runs the sequences one after the other, and puts together what the recorder sends.
#pragma once

#include "device/MIDISequenceBase.h"
#include "device/ORLODeviceInfo.h"
#include "platform/MidiPackets.h"

#include <array>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <span>

namespace deckmate {

/// One sequence runs at a time; the others wait. Each complete message goes to the one that runs.
/// With nothing to do, the idle sequence listens to the recorder's own reports.
///
///     MIDISequenceManager& sequences = MIDISequenceManager::get();
///     sequences.startConnectSeq([] { showDevice(MIDISequenceManager::getDeviceInfo()); });
///     // whoever receives passes each packet on to receivedMidi() or receivedMidi_iOS13()
///
/// A sequence that has timed out makes room for the next one only when something arrives or is
/// asked for. Thread: main.
class MIDISequenceManager {
public:
    /// What happens with a complete message: YES if no further one is wanted. This and the
    /// completions of sequences may empty s_seq_controller().
    using Callback = std::function<bool(std::span<const std::uint8_t> message)>;

    /// The one there is; made by the first call.
    static MIDISequenceManager& get();
    /// Null before that. To be emptied before the main loop goes.
    static std::unique_ptr<MIDISequenceManager>& s_seq_controller();
    /// What all sequences write to. Made together with the manager.
    static ORLODeviceInfo& getDeviceInfo();

    MIDISequenceManager();
    ~MIDISequenceManager();
    MIDISequenceManager(const MIDISequenceManager&) = delete;
    MIDISequenceManager& operator=(const MIDISequenceManager&) = delete;
    MIDISequenceManager(MIDISequenceManager&&) = delete;
    MIDISequenceManager& operator=(MIDISequenceManager&&) = delete;

    // ---- Sequences

    /// `onComplete` is called when the recorder is known, and then after every message that comes
    /// while nothing else runs.
    void startConnectSeq(std::function<void()> onComplete);
    void startChangeBatteryTypeSeq(std::uint8_t value, std::function<void()> onComplete);
    void startChangeAutoPowOffSeq(std::uint8_t value, std::function<void()> onComplete);

    /// Starts the next sequence if none runs; without one, idles.
    void checkAndRunQueue();
    /// Idles, whatever runs or waits.
    void forceStopSeq();
    bool isSeqRunning() const { return current_seq_ && !current_seq_->didCompleted(); }
    /// Puts a sequence before the one that runs, which begins anew afterwards. Starts nothing.
    void switchToNewSeq(std::shared_ptr<MIDISequenceBase> sequence);
    /// Sends a message beside the sequences, and has all messages given to `callback` until it is
    /// content.
    void exeCommand(std::span<const std::uint8_t> bytes, Callback callback);
    /// Gives the last message to the callback of exeCommand().
    void notifyUI_IFNeeded();
    /// Keeps the callback; sends nothing.
    void send(std::span<const std::uint8_t> bytes, std::function<void()> response);
    /// To be called after each packet; `isCompleted`: it completed a message.
    void notifyNewData(bool isCompleted);

    const std::shared_ptr<MIDISequenceBase>& current_seq() const { return current_seq_; }
    const std::deque<std::shared_ptr<MIDISequenceBase>>& queue() const { return queue_; }
    /// The idle sequence.
    static const std::shared_ptr<MIDISequenceBase>& s_NO_OP() { return s_NO_OP_; }

    // ---- Receiving

    void receivedMidi(const MIDIEventPacket& packet);
    void receivedMidi_iOS13(const MIDIPacket& packet, bool isLast);

    /// More than this is not kept of a message, and one that was longer never completes.
    static constexpr std::uint32_t capacity = 20000;
    /// The message that is being received or was last received: F0 first, F7 not counted.
    static std::span<const std::uint8_t> message();

    /// Words of the Universal MIDI Packet that begins with this one ("Universal MIDI Packet (UMP)
    /// Format", 2.1.4).
    static std::uint32_t count_word_in_message(std::uint32_t word);

    /// One Universal MIDI Packet.
    struct MessageInfo {
        std::array<std::uint32_t, 4> words = {};
        std::uint32_t count = 0;
    };
    /// Changes nothing: what is received is MIDI 1.0.
    static void midi2ToMidi1DefaultTranslation(const MessageInfo& info);
    /// Appends the bytes of a packet of message type 3.
    static void insert_to_buffer(std::span<const std::uint32_t, 2> words);
    /// Makes a message of a packet of 32 bits.
    static void processMessage1(std::uint32_t word);
    /// All that follow: YES if a message is complete.
    static bool processSysEx(std::span<const std::uint32_t, 2> words);
    static bool convetMessageInfo(const MessageInfo& info);
    /// Of several messages in a packet only the first is kept.
    static bool convertMidiPacket2ByteArr(const MIDIEventPacket& packet);
    bool storeToBuffer(bool isLast, const MIDIPacket& packet);

private:
    void start(std::shared_ptr<MIDISequenceBase> sequence, std::function<void()> onComplete);

    static std::shared_ptr<MIDISequenceBase> s_NO_OP_;

    std::shared_ptr<MIDISequenceBase> current_seq_;
    std::deque<std::shared_ptr<MIDISequenceBase>> queue_;
    std::function<void()> response_;
    Callback exeBlock_;
    bool is_message_received_finish_ios13_ = true;
    /// Expires with this, which may be inside any call that a message leads to.
    std::shared_ptr<const bool> life_ = std::make_shared<const bool>(true);
};

} // namespace deckmate
