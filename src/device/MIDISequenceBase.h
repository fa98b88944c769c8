// An exchange with the recorder: a request, the reply it waits for, and perhaps further ones.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>

namespace deckmate {

class Timer;

/// The base of all sequences, and one that does nothing. Sequences are owned by shared pointers.
/// Thread: main.
class MIDISequenceBase : public std::enable_shared_from_this<MIDISequenceBase> {
public:
    MIDISequenceBase() = default;
    virtual ~MIDISequenceBase() = default;
    MIDISequenceBase(const MIDISequenceBase&) = delete;
    MIDISequenceBase& operator=(const MIDISequenceBase&) = delete;
    MIDISequenceBase(MIDISequenceBase&&) = delete;
    MIDISequenceBase& operator=(MIDISequenceBase&&) = delete;

    /// Sends the first request.
    virtual void startSequence() {}
    /// Drops the time-out, whichever sequence it belongs to: one of them waits at a time.
    static void cleanTimeOutTimer();
    /// Has sequenceTimeOut() called after a while, in place of any time-out before.
    void markTimeOut(double seconds = usualTimeOut);
    void markTimeOutWithDescription(const std::string& description);
    void markTimeOut(double seconds, const std::string& description);
    virtual void sequenceTimeOut(const std::string& description);
    /// What the last time-out was called when it was armed.
    const std::string& timeout_description() const { return timeout_description_; }
    /// A complete message: F0 first, F7 not counted. What isn't waited for is ignored.
    virtual void receivedMidi(std::span<const std::uint8_t> message);
    /// Waits for nothing any more.
    virtual void dispose() { cleanTimeOutTimer(); }
    virtual bool didCompleted() const { return true; }

    const std::string& SEQ_Name() const { return SEQ_Name_; }
    void setSEQ_Name(const std::string& name) { SEQ_Name_ = name; }
    /// Called by the manager once the sequence has completed; not after a time-out.
    const std::function<void()>& onCompleted() const { return onCompleted_; }
    void setOnCompleted(std::function<void()> onCompleted) {
        onCompleted_ = std::move(onCompleted);
    }

    /// The one time-out there is; null for none. To be dropped before the main loop goes.
    static std::unique_ptr<Timer>& S_TIMER_TIMEOUT();

private:
    static constexpr double usualTimeOut = 2.0; // seconds

    std::string timeout_description_;
    std::string SEQ_Name_;
    std::function<void()> onCompleted_;
};

/// Always completed: what runs before the first connection.
class MIDINOPSequence final : public MIDISequenceBase {};

/// A sequence that goes from step to step; step 0 is none.
class MIDIStepSequence : public MIDISequenceBase {
public:
    void dispose() override;
    void sequenceTimeOut(const std::string& description) override;
    bool didCompleted() const override { return seq_ == 0; }
    std::uint64_t seq() const { return seq_; }

protected:
    void setSeq(std::uint64_t seq) { seq_ = seq; }

private:
    std::uint64_t seq_ = 0;
};

} // namespace deckmate
