// A device behind a file, played over a pseudo-terminal, which is a raw byte stream with two ends
// as well. Devices of the sequencer are what Midi's back end is asked with.
#include "platform/MidiDevice.h"

#include "support/Bytes.h"
#include "support/ManualRunLoop.h"

#include <array>
#include <cstdlib>
#include <gtest/gtest.h>
#include <memory>
#include <span>
#include <string>

#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

namespace deckmate {
namespace {

using test::Bytes;
using test::ManualRunLoop;

/// The other end, without any treatment of the bytes.
class Terminal {
public:
    Terminal() : end_(posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK)) {
        EXPECT_EQ(grantpt(end_), 0);
        EXPECT_EQ(unlockpt(end_), 0);
        std::array<char, 100> name = {};
        EXPECT_EQ(ptsname_r(end_, name.data(), name.size()), 0);
        path = name.data();
        termios settings = {};
        tcgetattr(end_, &settings);
        cfmakeraw(&settings);
        tcsetattr(end_, TCSANOW, &settings);
    }
    ~Terminal() { hangUp(); }
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;
    Terminal(Terminal&&) = delete;
    Terminal& operator=(Terminal&&) = delete;

    void put(const Bytes& bytes) const {
        EXPECT_EQ(write(end_, bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
    }
    Bytes take() const {
        Bytes bytes(10'000);
        const ssize_t count = read(end_, bytes.data(), bytes.size());
        bytes.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
        return bytes;
    }
    void hangUp() {
        if (end_ >= 0) {
            close(end_);
            end_ = -1;
        }
    }

    std::string path;

private:
    int end_;
};

class RawMidiDeviceTest : public testing::Test {
protected:
    std::unique_ptr<MidiDevice> open() {
        return MidiDevice::openRaw(
            terminal_.path,
            [this](std::span<const std::uint8_t> bytes) {
                taken_.insert(taken_.end(), bytes.begin(), bytes.end());
            },
            [this] { ++gone_; }, error_);
    }

    ManualRunLoop loop_;
    Terminal terminal_;
    Bytes taken_;
    int gone_ = 0;
    std::string error_;
};

TEST_F(RawMidiDeviceTest, HandsOverWhatArrives) {
    const auto device = open();
    ASSERT_NE(device, nullptr) << error_;
    terminal_.put({0xF0, 0x11, 0x0D, 0x0A, 0xF7});
    EXPECT_EQ(taken_, Bytes{});
    loop_.runPending();
    terminal_.put({0x00, 0xFF});
    loop_.runPending();
    EXPECT_EQ(taken_, (Bytes{0xF0, 0x11, 0x0D, 0x0A, 0xF7, 0x00, 0xFF}));
}

TEST_F(RawMidiDeviceTest, SendsBytesAsTheyAre) {
    const auto device = open();
    ASSERT_NE(device, nullptr) << error_;
    const Bytes bytes = {0xF0, 0x03, 0x0A, 0x7F, 0xF7, 0x00};
    EXPECT_TRUE(device->send(bytes));
    EXPECT_EQ(terminal_.take(), bytes);
}

TEST_F(RawMidiDeviceTest, SendingNothingIsNoFailure) {
    const auto device = open();
    ASSERT_NE(device, nullptr) << error_;
    EXPECT_TRUE(device->send({}));
}

TEST_F(RawMidiDeviceTest, SendingMoreThanTheOtherSideTakesFailsWithoutWaiting) {
    const auto device = open();
    ASSERT_NE(device, nullptr) << error_;
    EXPECT_FALSE(device->send(test::zeros(1'000'000)));
}

TEST_F(RawMidiDeviceTest, IsGoneOnceWhenTheOtherSideHangsUp) {
    const auto device = open();
    ASSERT_NE(device, nullptr) << error_;
    terminal_.hangUp();
    loop_.runPending();
    loop_.runPending();
    EXPECT_EQ(gone_, 1);
    EXPECT_FALSE(device->send(Bytes{0xF8}));
}

TEST_F(RawMidiDeviceTest, MayBeDestroyedWhileItHandsOver) {
    std::unique_ptr<MidiDevice> device;
    int calls = 0;
    device = MidiDevice::openRaw(
        terminal_.path,
        [&](std::span<const std::uint8_t> /*bytes*/) {
            ++calls;
            device = nullptr;
        },
        [] {}, error_);
    ASSERT_NE(device, nullptr) << error_;
    terminal_.put({1, 2, 3});
    loop_.runPending();
    EXPECT_EQ(calls, 1);
}

TEST_F(RawMidiDeviceTest, MayBeDestroyedWhenItIsGone) {
    std::unique_ptr<MidiDevice> device;
    device = MidiDevice::openRaw(
        terminal_.path, [](std::span<const std::uint8_t> /*bytes*/) {},
        [&] {
            ++gone_;
            device = nullptr;
        },
        error_);
    ASSERT_NE(device, nullptr) << error_;
    terminal_.hangUp();
    loop_.runPending();
    EXPECT_EQ(gone_, 1);
}

TEST_F(RawMidiDeviceTest, AFileThatIsNotThereIsRefusedWithAReason) {
    terminal_.path = "/nowhere/midiC9D0";
    EXPECT_EQ(open(), nullptr);
    EXPECT_EQ(error_, "No such file or directory");
}

} // namespace
} // namespace deckmate
