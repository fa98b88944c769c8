// Recorders that are plugged in, pulled out, asked and silent.
#pragma once

#include "support/Bytes.h"
#include "support/InProcessMidi.h"

#include <cstdint>
#include <vector>

namespace deckmate::test {

/// Thread: main.
class Recorder {
public:
    explicit Recorder(InProcessMidi& midi) : midi_(midi) {}

    bool isPluggedIn() const { return device_ != nullptr; }
    /// In if it is out, else out.
    void plug();
    void pullAllOut();
    /// Answers nothing from now on, or again: what it was asked meanwhile first.
    void muzzle(bool isSilent);
    /// A card report by itself, or something that is none.
    void report(std::uint64_t which);
    /// A device that is no recorder comes or goes.
    void plugOther();

private:
    void asked(const Bytes& request);
    void answer(const Bytes& message);
    void answerOwed();

    InProcessMidi& midi_;
    InProcessDevice* device_ = nullptr;
    InProcessDevice* other_ = nullptr;
    bool isSilent_ = false;
    std::vector<Bytes> owed_;
};

} // namespace deckmate::test
