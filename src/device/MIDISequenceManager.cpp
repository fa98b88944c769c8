#include "device/MIDISequenceManager.h"

#include "device/MIDIAutoPowOffSequence.h"
#include "device/MIDIBatteryTypeSequence.h"
#include "device/MIDIConnectSequence.h"
#include "device/MIDIManager.h"
#include "device/MIDIRecvSDCardRemain.h"
#include "platform/RunLoop.h"

#include <utility>

namespace deckmate {

namespace {

std::shared_ptr<ORLODeviceInfo>& s_deviceInfo() {
    static std::shared_ptr<ORLODeviceInfo> info;
    return info;
}

} // namespace

std::shared_ptr<MIDISequenceBase> MIDISequenceManager::s_NO_OP_;

std::unique_ptr<MIDISequenceManager>& MIDISequenceManager::s_seq_controller() {
    // Never destroyed: its time-out could not outlive the main loop.
    static auto* const manager = new std::unique_ptr<MIDISequenceManager>;
    return *manager;
}

MIDISequenceManager& MIDISequenceManager::get() {
    if (!s_seq_controller()) {
        s_seq_controller() = std::make_unique<MIDISequenceManager>();
    }
    return *s_seq_controller();
}

ORLODeviceInfo& MIDISequenceManager::getDeviceInfo() {
    get();
    return *s_deviceInfo();
}

MIDISequenceManager::MIDISequenceManager() {
    s_deviceInfo() = std::make_shared<ORLODeviceInfo>();
    s_NO_OP_ = std::make_shared<MIDINOPSequence>();
    current_seq_ = s_NO_OP_;
}

MIDISequenceManager::~MIDISequenceManager() {
    MIDISequenceBase::cleanTimeOutTimer();
    s_NO_OP_.reset(); // with what its completion holds
}

void MIDISequenceManager::startConnectSeq(std::function<void()> onComplete) {
    auto connect = std::make_shared<MIDIConnectSequence>();
    connect->setDeviceInfo(s_deviceInfo());
    auto idle = std::make_shared<MIDIRecvSDCardRemain>();
    idle->setOnCompleted(onComplete);
    idle->setDeviceInfo(s_deviceInfo());
    s_NO_OP_ = std::move(idle);
    start(std::move(connect), std::move(onComplete));
}

void MIDISequenceManager::startChangeBatteryTypeSeq(std::uint8_t value,
                                                    std::function<void()> onComplete) {
    start(std::make_shared<MIDIBatteryTypeSequence>(value), std::move(onComplete));
}

void MIDISequenceManager::startChangeAutoPowOffSeq(std::uint8_t value,
                                                   std::function<void()> onComplete) {
    start(std::make_shared<MIDIAutoPowOffSequence>(value), std::move(onComplete));
}

void MIDISequenceManager::start(std::shared_ptr<MIDISequenceBase> sequence,
                                std::function<void()> onComplete) {
    sequence->setOnCompleted(std::move(onComplete));
    queue_.push_back(std::move(sequence));
    checkAndRunQueue();
}

void MIDISequenceManager::checkAndRunQueue() {
    if (!current_seq_->didCompleted()) {
        return;
    }
    if (queue_.empty()) {
        forceStopSeq();
        return;
    }
    current_seq_ = std::move(queue_.front());
    queue_.pop_front();
    const std::shared_ptr<MIDISequenceBase> starting = current_seq_;
    starting->startSequence();
}

void MIDISequenceManager::forceStopSeq() {
    if (current_seq_ == s_NO_OP_) {
        return;
    }
    current_seq_->dispose();
    current_seq_ = s_NO_OP_;
    current_seq_->startSequence();
    for (const std::shared_ptr<MIDISequenceBase>& waiting : queue_) {
        if (!waiting->didCompleted()) {
            waiting->dispose();
        }
    }
    queue_.clear();
}

void MIDISequenceManager::switchToNewSeq(std::shared_ptr<MIDISequenceBase> sequence) {
    if (!current_seq_->didCompleted()) {
        queue_.push_front(current_seq_);
    }
    queue_.push_front(std::move(sequence));
    current_seq_ = s_NO_OP_;
}

void MIDISequenceManager::exeCommand(std::span<const std::uint8_t> bytes, Callback callback) {
    exeBlock_ = std::move(callback);
    MIDIManager::get().send(bytes);
}

void MIDISequenceManager::notifyUI_IFNeeded() {
    if (exeBlock_) {
        const std::weak_ptr life(life_);
        Callback callback = std::exchange(exeBlock_, nullptr);
        if (!callback(message()) && !life.expired()) {
            exeBlock_ = std::move(callback);
        }
    }
}

void MIDISequenceManager::send(std::span<const std::uint8_t> /*bytes*/,
                               std::function<void()> response) {
    response_ = std::move(response);
}

void MIDISequenceManager::notifyNewData(bool isCompleted) {
    const std::weak_ptr life(life_);
    if (isCompleted) {
        notifyUI_IFNeeded();
        if (life.expired()) {
            return;
        }
        const std::shared_ptr<MIDISequenceBase> current = current_seq_;
        const bool wasWaiting = !current->didCompleted();
        current->receivedMidi(message());
        if (life.expired()) { // the answer to what it sent has been received meanwhile
            return;
        }
        // Not of one that had timed out before, nor if another one has begun meanwhile.
        const bool isNews = current == current_seq_ && (wasWaiting || current == s_NO_OP_);
        if (isNews && current->didCompleted()) {
            if (const std::function<void()> onCompleted = current->onCompleted()) {
                onCompleted();
            }
        }
    }
    if (!life.expired()) {
        checkAndRunQueue();
    }
}

} // namespace deckmate
