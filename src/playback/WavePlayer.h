// The transport of the open recording, and what is done to its samples on their way out.
#pragma once

#include "playback/AQPlayer.h"
#include "recording/SampleRamps.h"
#include "recording/WavArray.h"
#include "recording/WaveFileReader.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <mutex>
#include <string>

namespace deckmate {

/// Hears of the player's changes. May be called on any thread.
class WavePlayerDelegate {
public:
    WavePlayerDelegate() = default;
    virtual ~WavePlayerDelegate() = default;
    WavePlayerDelegate(const WavePlayerDelegate&) = delete;
    WavePlayerDelegate& operator=(const WavePlayerDelegate&) = delete;
    WavePlayerDelegate(WavePlayerDelegate&&) = delete;
    WavePlayerDelegate& operator=(WavePlayerDelegate&&) = delete;

    /// After each change of state that play(), pause(), playFinish() or setPosition() made. The
    /// player may be destroyed inside this call.
    virtual void WavePlayerStateChanged() = 0;
    /// Linear levels.
    virtual void WavePlayerLevelChanged(double left, double right) = 0;
};

enum PlayState : std::uint32_t {
    PLAY_STATE_INIT = 0,
    PLAY_STATE_PLAY = 1,
    PLAY_STATE_PAUSE = 2,
    PLAY_STATE_FINISH = 3,
};

/// Plays a recording with mid/side decoding and gain that follow `angle` and `gain` while it plays,
/// moving smoothly from buffer to buffer.
///
///     WavePlayer player("take.wav");
///     player.setReader(recording.reader());
///     player.setDelegate(&window);
///     player.setAngle(120);
///     player.play();
///
/// 24-bit samples and 32-bit floats of two channels are processed; mono and anything else is played
/// as it is. With more channels, as many pairs as there are frames are processed from the start of
/// each buffer. Whoever hears the event "EB_PLAY_FINISH" calls playFinish(). Thread: main.
class WavePlayer {
public:
    explicit WavePlayer(const std::filesystem::path& file);
    /// Stops the sound.
    ~WavePlayer();
    WavePlayer(const WavePlayer&) = delete;
    WavePlayer& operator=(const WavePlayer&) = delete;
    WavePlayer(WavePlayer&&) = delete;
    WavePlayer& operator=(WavePlayer&&) = delete;

    // ---- Transport

    /// Plays, or pauses while playing; at the end, begins anew.
    void play();
    void pause();
    /// The sound has stopped; ignored while a seek has stopped it.
    void playFinish();
    /// Goes to a fraction of the recording, 0.0 to 1.0; to 1.0 is to its end, which finishes.
    void setPosition(double position);
    bool getIsDone() const { return player_->getIsDone(); }
    bool getIsError() const { return player_->getIsError(); }
    /// Gives up file and output.
    void cleanUp();

    std::uint32_t play_state() const { return play_state_; }
    /// Without telling anybody.
    void changeState(std::uint32_t state);
    /// "STATE NOT FOUND" for what is no state.
    static std::string state2Str(std::uint32_t state);
    /// The fraction last gone to; -1.0 for none, or when playing has finished since.
    double setPositionOldVal() const { return setPositionOldVal_; }
    bool isSeeking() const { return isSeeking_; }

    // ---- Settings

    double volume() const { return volume_; }
    /// Linear; what is outside 0.0 to 1.0 is ignored.
    void setVolume(double volume);
    /// Decibels, positive is louder; from the next buffer on.
    std::int64_t gain() const { return gain_; }
    void setGain(std::int64_t gain) { gain_ = gain; }
    /// Stereo width as an index of SideLevelCoef, 0 to 150; from the next buffer on.
    std::int64_t angle() const { return angle_; }
    void setAngle(std::int64_t angle) { angle_ = angle; }
    /// The recording's reader, which tells its layout. Thread: any.
    std::shared_ptr<WaveFileReader> reader() const;
    void setReader(std::shared_ptr<WaveFileReader> reader);
    /// Not owned; null for none.
    WavePlayerDelegate* delegate() const { return delegate_; }
    void setDelegate(WavePlayerDelegate* delegate) { delegate_ = delegate; }

    // ---- Time

    /// Whole seconds.
    double duration() const;
    /// Seconds.
    double curremtTime() const;
    std::string durationString() const;
    /// Empty for a time before the recording's beginning.
    std::string currentTimeString() const;
    std::string getTimeFromPosition(double position) const;
    static std::string getZeroTimeString() { return second2String(0); }
    /// "hh:mm:ss", with more digits from 100 hours on.
    static std::string second2String(std::int32_t seconds);

    // ---- Samples

    /// Decodes and amplifies a buffer of packets in place. `curPackage` is not used.
    void processSampleBuffer(AudioQueueBuffer& buffer, const StreamDescription& info,
                             std::int64_t curPackage);
    /// Makes room for the buffer's frames in the float buffer, and clears its first quarter.
    static void prepareFloatBuffer(const AudioQueueBuffer& buffer);
    /// Fills the float buffer. Samples that the buffer doesn't have are 0.
    void convertByte24bit2Float(const AudioQueueBuffer& buffer) const;
    /// Writes the float buffer back, cut toward zero. Too loud a left sample is clipped; of a right
    /// one the low 24 bits are written.
    static void convertFloat2Byte24Bit(AudioQueueBuffer& buffer);
    /// The float buffer, shared by all players; it only grows.
    static WavArrayFloat32& S_24_BIT_SAMPLE_IN_FLOAT();

private:
    bool notify();

    std::filesystem::path fileUrl_;
    /// Shared with calls under way, during which a delegate may destroy this.
    std::shared_ptr<AQPlayer> player_;
    AdjustDBInfo dbinfo_;
    AdjustAngleInfo angleinfo_;
    double setPositionOldVal_ = -1.0;
    bool isSeeking_ = false;
    double volume_ = 1.0;
    std::uint32_t play_state_ = PLAY_STATE_INIT;
    std::int64_t gain_ = 0;
    std::int64_t angle_ = 0;
    mutable std::mutex readerLock_;
    std::shared_ptr<WaveFileReader> reader_;
    WavePlayerDelegate* delegate_ = nullptr;
    /// Gone when this is gone.
    std::shared_ptr<WavePlayer*> life_ = std::make_shared<WavePlayer*>(this);
};

} // namespace deckmate
