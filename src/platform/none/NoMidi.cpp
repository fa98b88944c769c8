#include "platform/none/NoMidi.h"

#include "platform/MidiBackend.h"

namespace deckmate {

namespace {

class NoMidi final : public MidiBackend {
public:
    bool hasEventLists() const override { return false; }
    std::size_t numberOfSources() const override { return 0; }
    std::size_t numberOfDestinations() const override { return 0; }
    MidiRef source(std::size_t /*index*/) const override { return 0; }
    MidiRef destination(std::size_t /*index*/) const override { return 0; }
    std::optional<std::string> displayName(MidiRef /*endpoint*/) const override {
        return std::nullopt;
    }

protected:
    MidiStatus transmit(MidiRef /*port*/, MidiRef /*destination*/,
                        std::span<const std::uint8_t> /*bytes*/) override {
        return midiNotAvailable;
    }
};

} // namespace

std::unique_ptr<Midi> makeNoMidi() {
    return std::make_unique<NoMidi>();
}

} // namespace deckmate
