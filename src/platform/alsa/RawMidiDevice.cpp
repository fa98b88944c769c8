// A device in software behind a raw MIDI device file.
#include "platform/MidiDevice.h"
#include "platform/RunLoop.h"

#include <array>
#include <cerrno>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

namespace deckmate {

namespace {

/// As much as the kernel's own buffer of such a device holds.
constexpr std::size_t mostAtOnce = 4096;

class RawMidiDevice final : public MidiDevice {
public:
    RawMidiDevice(int descriptor, Reader reader, Gone gone)
        : descriptor_(descriptor), reader_(std::make_shared<const Reader>(std::move(reader))),
          gone_(std::move(gone)),
          watch_(RunLoop::main().watchReadable(descriptor, [this] { take(); })) {
        // The kernel drops what arrives before somebody asks for it for the first time.
        pollfd asked = {.fd = descriptor, .events = POLLIN, .revents = 0};
        poll(&asked, 1, 0);
    }
    ~RawMidiDevice() override {
        watch_ = nullptr;
        close(descriptor_);
    }
    RawMidiDevice(const RawMidiDevice&) = delete;
    RawMidiDevice& operator=(const RawMidiDevice&) = delete;
    RawMidiDevice(RawMidiDevice&&) = delete;
    RawMidiDevice& operator=(RawMidiDevice&&) = delete;

    bool send(std::span<const std::uint8_t> bytes) override {
        while (!bytes.empty()) {
            const ssize_t count = write(descriptor_, bytes.data(), bytes.size());
            if (count > 0) {
                bytes = bytes.subspan(static_cast<std::size_t>(count));
            } else if (count == 0 || errno != EINTR) {
                return false; // EAGAIN as well: who doesn't read misses what doesn't fit
            }
        }
        return true;
    }

private:
    void take() {
        std::array<std::uint8_t, mostAtOnce> bytes = {};
        const ssize_t count = read(descriptor_, bytes.data(), bytes.size());
        if (count > 0) {
            const auto reader = reader_; // held here, because it may destroy this
            (*reader)(std::span(bytes).first(static_cast<std::size_t>(count)));
        } else if (count == 0 || (errno != EAGAIN && errno != EINTR)) {
            watch_ = nullptr;
            if (const Gone gone = std::exchange(gone_, nullptr)) {
                gone();
            }
        }
    }

    int descriptor_;
    std::shared_ptr<const Reader> reader_;
    Gone gone_;
    std::unique_ptr<DescriptorWatch> watch_;
};

} // namespace

std::unique_ptr<MidiDevice> MidiDevice::openRaw(const std::string& path, Reader reader, Gone gone,
                                                std::string& error) {
    const int descriptor = open(path.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC | O_NOCTTY);
    if (descriptor < 0) {
        error = std::generic_category().message(errno);
        return nullptr;
    }
    return std::make_unique<RawMidiDevice>(descriptor, std::move(reader), std::move(gone));
}

} // namespace deckmate
