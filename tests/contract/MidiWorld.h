// The back ends of Midi, each with devices that a test can plug in.
#pragma once

#include "platform/Midi.h"
#include "support/Bytes.h"

#include <functional>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

namespace deckmate::test {

/// A back end and the devices of this machine.
class World {
public:
    World() = default;
    virtual ~World() = default;
    World(const World&) = delete;
    World& operator=(const World&) = delete;
    World(World&&) = delete;
    World& operator=(World&&) = delete;

    virtual Midi& midi() = 0;
    virtual void plug(const std::string& name) = 0;
    virtual void unplug(const std::string& name) = 0;
    /// The device sends, and it is on its way.
    virtual void answer(const std::string& name, const Bytes& bytes) = 0;
    /// All that the device has got.
    virtual Bytes taken(const std::string& name) = 0;
};

/// A kind of world, for parameterised tests.
struct Kind {
    std::string name;
    std::function<std::unique_ptr<World>()> make;
};

void PrintTo(const Kind& kind, std::ostream* out);

/// In-process devices in both shapes of messages; the same by the sequencer where there is one.
std::vector<Kind> kindsWithDevices();
/// These, and the one without devices.
std::vector<Kind> allKinds();

} // namespace deckmate::test
