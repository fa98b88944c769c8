#include "platform/StandardStreams.h"

#include <algorithm>
#include <array>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <string>
#include <unistd.h>

namespace deckmate {
namespace {

class StandardStreamsTest : public testing::Test {
protected:
    StandardStreamsTest() { EXPECT_EQ(pipe(ends_.data()), 0); }
    ~StandardStreamsTest() override {
        closeReader();
        close(ends_[1]);
    }
    StandardStreamsTest(const StandardStreamsTest&) = delete;
    StandardStreamsTest& operator=(const StandardStreamsTest&) = delete;
    StandardStreamsTest(StandardStreamsTest&&) = delete;
    StandardStreamsTest& operator=(StandardStreamsTest&&) = delete;

    int writer() const { return ends_[1]; }
    void closeReader() {
        if (ends_[0] >= 0) {
            close(ends_[0]);
            ends_[0] = -1;
        }
    }
    std::string read() const {
        std::array<char, 100> room = {};
        const ssize_t count = ::read(ends_[0], room.data(), room.size());
        return {room.data(), static_cast<std::size_t>(std::max<ssize_t>(count, 0))};
    }

private:
    std::array<int, 2> ends_ = {-1, -1};
};

TEST_F(StandardStreamsTest, TheTextArrivesAsItIs) {
    writeToStream(writer(), "AudioFileReadPackets failed: 5\n");
    EXPECT_EQ(read(), "AudioFileReadPackets failed: 5\n");
}

TEST_F(StandardStreamsTest, AReaderThatIsGoneEndsNobody) {
    closeReader();
    writeToStream(writer(), "text");
    writeToStream(writer(), "text");
}

TEST_F(StandardStreamsTest, AReaderThatHangsHoldsUpNobody) {
    for (int i = 0; i < 1000; ++i) {
        writeToStream(writer(), std::string(1000, 'x'));
    }
    EXPECT_EQ(read(), std::string(100, 'x'));
}

TEST_F(StandardStreamsTest, AStreamThatIsNoneIsHarmless) {
    writeToStream(-1, "text");
}

} // namespace
} // namespace deckmate
