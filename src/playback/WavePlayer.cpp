#include "playback/WavePlayer.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>
#include <utility>

namespace deckmate {

namespace {

/// Whole seconds, rounded down; the nearest that can be shown, and 0 if there is no time.
std::int32_t wholeSeconds(double seconds) {
    if (std::isnan(seconds)) {
        return 0;
    }
    constexpr double least = std::numeric_limits<std::int32_t>::min();
    constexpr double most = std::numeric_limits<std::int32_t>::max();
    return static_cast<std::int32_t>(std::clamp(std::floor(seconds), least, most));
}

double finite(double value) {
    return std::isfinite(value) ? value : 0.0;
}

} // namespace

WavePlayer::WavePlayer(const std::filesystem::path& file)
    : fileUrl_(file), player_(std::make_shared<AQPlayer>(file)) {
    player_->setVolume(volume_);
    player_->setDataCB([weak = std::weak_ptr(life_)](AudioQueueBuffer& buffer,
                                                     const StreamDescription& info,
                                                     std::int64_t curPackage) {
        if (const auto life = weak.lock()) {
            (*life)->processSampleBuffer(buffer, info, curPackage);
        }
    });
}

WavePlayer::~WavePlayer() = default;

void WavePlayer::play() {
    const std::shared_ptr<AQPlayer> player = player_;
    switch (play_state_) {
    case PLAY_STATE_PLAY:
        pause();
        break;
    case PLAY_STATE_FINISH:
        changeState(PLAY_STATE_PLAY);
        if (!notify()) {
            return;
        }
        if (setPositionOldVal_ == -1.0 || setPositionOldVal_ == 1.0) {
            const std::weak_ptr life = life_;
            setPosition(0.0);
            if (life.expired()) {
                return;
            }
            isSeeking_ = false;
        } else {
            player->play(false);
        }
        player->setVolume(volume_);
        break;
    default:
        player->play(play_state_ == PLAY_STATE_PAUSE);
        changeState(PLAY_STATE_PLAY);
        notify();
        break;
    }
}

void WavePlayer::pause() {
    if (play_state_ == PLAY_STATE_PLAY) {
        player_->pause();
        changeState(PLAY_STATE_PAUSE);
        notify();
    }
}

void WavePlayer::playFinish() {
    if (!isSeeking_) {
        setPositionOldVal_ = -1.0;
        changeState(PLAY_STATE_FINISH);
        notify();
    }
}

void WavePlayer::setPosition(double position) {
    const bool isEnd = position == 1.0;
    isSeeking_ = !isEnd; // going to the end may finish
    setPositionOldVal_ = position;
    const std::shared_ptr<AQPlayer> player = player_;
    const std::weak_ptr life = life_;
    player->setPosition(position, play_state_ == PLAY_STATE_PLAY);
    if (life.expired()) {
        return;
    }
    isSeeking_ = false;
    player->setVolume(volume_);

    if (isEnd) {
        changeState(PLAY_STATE_FINISH);
        notify();
    } else if (play_state_ == PLAY_STATE_PLAY) {
        notify();
    } else if (play_state_ == PLAY_STATE_FINISH) {
        changeState(PLAY_STATE_PAUSE);
        notify();
    }
}

/// Whether the player is still there afterwards.
bool WavePlayer::notify() {
    const std::weak_ptr life = life_;
    if (delegate_ != nullptr) {
        delegate_->WavePlayerStateChanged();
    }
    return !life.expired();
}

void WavePlayer::cleanUp() {
    player_->cleanUp();
}

void WavePlayer::changeState(std::uint32_t state) {
    play_state_ = state;
}

std::string WavePlayer::state2Str(std::uint32_t state) {
    switch (state) {
    case PLAY_STATE_INIT:
        return "PLAY_STATE_INIT";
    case PLAY_STATE_PLAY:
        return "PLAY_STATE_PLAY";
    case PLAY_STATE_PAUSE:
        return "PLAY_STATE_PAUSE";
    case PLAY_STATE_FINISH:
        return "PLAY_STATE_FINISH";
    default:
        return "STATE NOT FOUND";
    }
}

void WavePlayer::setVolume(double volume) {
    if (volume < 0.0 || volume > 1.0) {
        return;
    }
    volume_ = volume;
    player_->setVolume(volume);
}

std::shared_ptr<WaveFileReader> WavePlayer::reader() const {
    const std::lock_guard guard(readerLock_);
    return reader_;
}

void WavePlayer::setReader(std::shared_ptr<WaveFileReader> reader) {
    const std::lock_guard guard(readerLock_);
    reader_ = std::move(reader);
}

double WavePlayer::duration() const {
    return std::floor(finite(player_->duration()));
}

double WavePlayer::curremtTime() const {
    return finite(player_->currentTime()) / 1000.0;
}

std::string WavePlayer::durationString() const {
    return second2String(wholeSeconds(player_->duration()));
}

std::string WavePlayer::currentTimeString() const {
    if (play_state_ == PLAY_STATE_INIT) {
        return "00:00:00";
    }
    const std::int32_t seconds = wholeSeconds(player_->currentTime() / 1000.0);
    return seconds < 0 ? "" : second2String(seconds);
}

std::string WavePlayer::getTimeFromPosition(double position) const {
    return second2String(wholeSeconds(player_->timeFromPosition(position) / 1000.0));
}

std::string WavePlayer::second2String(std::int32_t seconds) {
    const std::int32_t hours = seconds / 3600;
    const std::int32_t minutes = (seconds - hours * 3600) / 60;
    char text[40];
    std::snprintf(text, sizeof text, "%02d:%02d:%02d", hours, minutes, seconds % 60);
    return text;
}

} // namespace deckmate
