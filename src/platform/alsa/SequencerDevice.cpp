// A device in software as a client of the ALSA sequencer.
#include "platform/MidiDevice.h"
#include "platform/alsa/SequencerClient.h"

#include <utility>

namespace deckmate {

namespace {

constexpr unsigned capabilities = sequencerPort::canRead | sequencerPort::canSubscribeRead |
                                  sequencerPort::canWrite | sequencerPort::canSubscribeWrite;
constexpr std::uint8_t firstStatus = 0x80;
constexpr std::uint8_t startOfSysEx = 0xF0;
constexpr std::uint8_t endOfSysEx = 0xF7;

class SequencerDevice final : public MidiDevice {
public:
    SequencerDevice(std::unique_ptr<SequencerClient> sequencer, int port)
        : sequencer_(std::move(sequencer)), port_(port) {}

    bool send(std::span<const std::uint8_t> bytes) override {
        if (bytes.empty()) {
            return true;
        }
        const bool isShortMessage =
            bytes[0] >= firstStatus && bytes[0] != startOfSysEx && bytes[0] != endOfSysEx;
        if (isShortMessage) {
            SequencerOutput output;
            return sequencer_->send(port_, SequencerClient::subscribers, bytes, output);
        }
        return sequencer_->sendPiece(port_, SequencerClient::subscribers, bytes);
    }

private:
    std::unique_ptr<SequencerClient> sequencer_;
    int port_;
};

} // namespace

std::unique_ptr<MidiDevice> MidiDevice::openSequencerPort(const std::string& name, Reader reader,
                                                          Gone gone, std::string& error) {
    auto sequencer = SequencerClient::open(error);
    if (!sequencer) {
        return nullptr;
    }
    // Before there is a port: who sees it is to see the name as well.
    sequencer->setName(name);
    sequencer->start({.received = [reader = std::move(reader)](
                                      SequencerAddress /*from*/, int /*port*/,
                                      SequencerHandlers::Bytes bytes) { reader(bytes); },
                      .announced = nullptr,
                      .inputLost = [] {},
                      .gone = std::move(gone)});
    const auto port = sequencer->createPort(name, capabilities);
    if (!port) {
        error = "The sequencer has no port left";
        return nullptr;
    }
    return std::make_unique<SequencerDevice>(std::move(sequencer), *port);
}

} // namespace deckmate
