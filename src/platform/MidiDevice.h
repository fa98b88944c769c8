// The other end of a MIDI cable: for programs that play a device.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>

namespace deckmate {

/// A device in software, which computers and programs can be connected to.
///
/// Thread: main, and so is the reader's call.
class MidiDevice {
public:
    /// Bytes in the order of arrival, in pieces of any size; messages are not kept together.
    using Reader = std::function<void(std::span<const std::uint8_t> bytes)>;
    /// The other side is gone for good.
    using Gone = std::function<void()>;

    MidiDevice() = default;
    virtual ~MidiDevice() = default;
    MidiDevice(const MidiDevice&) = delete;
    MidiDevice& operator=(const MidiDevice&) = delete;
    MidiDevice(MidiDevice&&) = delete;
    MidiDevice& operator=(MidiDevice&&) = delete;

    /// Sends bytes as they are, in one piece where the transport has pieces. NO when not all of
    /// them left.
    virtual bool send(std::span<const std::uint8_t> bytes) = 0;

    /// A duplex port of the ALSA sequencer; the port's name is also the client's. On failure null,
    /// and `error` says why.
    static std::unique_ptr<MidiDevice> openSequencerPort(const std::string& name, Reader reader,
                                                         Gone gone, std::string& error);
    /// A raw MIDI device file, like the one of the kernel's USB MIDI gadget. Likewise.
    static std::unique_ptr<MidiDevice> openRaw(const std::string& path, Reader reader, Gone gone,
                                               std::string& error);
};

} // namespace deckmate
