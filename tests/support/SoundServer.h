// A sound server of the test's own, with an output that nobody hears.
#pragma once

#include "support/ChildProcess.h"
#include "support/TemporaryFolder.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace deckmate::test {

/// PulseAudio with private folders and a null sink "h8", two channels of floats. From the first one
/// on, the sound library of this process connects to it, and to nothing else.
class SoundServer {
public:
    /// Starts the server; its sink has this rate.
    explicit SoundServer(std::uint32_t rate = 48000);
    ~SoundServer();
    SoundServer(const SoundServer&) = delete;
    SoundServer& operator=(const SoundServer&) = delete;
    SoundServer(SoundServer&&) = delete;
    SoundServer& operator=(SoundServer&&) = delete;

    /// Takes the sound library's servers and cards away from this process.
    static void hideAll();

    /// Gone from one moment to the next.
    void kill();
    /// Once more, after kill().
    void start();
    /// Stands still, with all its connections, until thaw().
    void freeze();
    void thaw();
    /// Asks the server for something by pactl(1); NO if it says no.
    bool ask(const std::vector<std::string>& request) const;

    std::uint32_t rate() const { return rate_; }

private:
    std::uint32_t rate_;
    std::unique_ptr<ChildProcess> process_;
};

/// Records what a server's sink plays.
class Capture {
public:
    /// Returns when the recording has begun.
    explicit Capture(const SoundServer& server);

    /// The samples so far: interleaved, two channels.
    std::vector<float> samples() const;
    /// Those of frames that are not silent on both channels.
    std::vector<float> heard() const;

private:
    TemporaryFolder folder_;
    std::string file_;
    ChildProcess process_;
};

} // namespace deckmate::test
