#include "MidiWorld.h"

#include "platform/MidiDevice.h"
#include "platform/alsa/AlsaMidi.h"
#include "platform/alsa/MidiPath.h"
#include "platform/none/NoMidi.h"
#include "support/InProcessMidi.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <map>
#include <span>

#include <unistd.h>

namespace deckmate::test {

namespace {

class NoDevices final : public World {
public:
    Midi& midi() override { return *midi_; }
    void plug(const std::string& /*name*/) override {}
    void unplug(const std::string& /*name*/) override {}
    void answer(const std::string& /*name*/, const Bytes& /*bytes*/) override {}
    Bytes taken(const std::string& /*name*/) override { return {}; }

private:
    std::unique_ptr<Midi> midi_ = makeNoMidi();
};

class InProcessWorld final : public World {
public:
    explicit InProcessWorld(bool hasEventLists) : midi_(hasEventLists) {}
    Midi& midi() override { return midi_; }
    void plug(const std::string& name) override { devices_[name] = &midi_.addDevice(name); }
    void unplug(const std::string& name) override { midi_.removeDevice(*devices_.at(name)); }
    void answer(const std::string& name, const Bytes& bytes) override {
        devices_.at(name)->answerLater(bytes);
    }
    Bytes taken(const std::string& name) override {
        Bytes all;
        for (const Bytes& message : devices_.at(name)->messages) {
            all.insert(all.end(), message.begin(), message.end());
        }
        return all;
    }

private:
    InProcessMidi midi_;
    std::map<std::string, InProcessDevice*> devices_;
};

class AlsaWorld final : public World {
public:
    explicit AlsaWorld(bool hasEventLists) {
        setenv(midiPathVariable, hasEventLists ? "events" : "packets", 1);
        midi_ = makeAlsaMidi();
        EXPECT_EQ(midi_->hasEventLists(), hasEventLists);
    }
    ~AlsaWorld() override { unsetenv(midiPathVariable); }
    AlsaWorld(const AlsaWorld&) = delete;
    AlsaWorld& operator=(const AlsaWorld&) = delete;
    AlsaWorld(AlsaWorld&&) = delete;
    AlsaWorld& operator=(AlsaWorld&&) = delete;

    Midi& midi() override { return *midi_; }
    void plug(const std::string& name) override {
        std::string error;
        devices_[name] = MidiDevice::openSequencerPort(
            name,
            [this, name](std::span<const std::uint8_t> bytes) {
                taken_[name].insert(taken_[name].end(), bytes.begin(), bytes.end());
            },
            [] {}, error);
        EXPECT_NE(devices_[name], nullptr) << error;
    }
    void unplug(const std::string& name) override { devices_.erase(name); }
    void answer(const std::string& name, const Bytes& bytes) override {
        EXPECT_TRUE(devices_.at(name)->send(bytes));
    }
    Bytes taken(const std::string& name) override { return taken_[name]; }

private:
    std::unique_ptr<Midi> midi_;
    std::map<std::string, std::unique_ptr<MidiDevice>> devices_;
    std::map<std::string, Bytes> taken_;
};

} // namespace

void PrintTo(const Kind& kind, std::ostream* out) {
    *out << kind.name;
}

std::vector<Kind> kindsWithDevices() {
    std::vector<Kind> kinds = {
        {"InProcessPackets", [] { return std::make_unique<InProcessWorld>(false); }},
        {"InProcessEvents", [] { return std::make_unique<InProcessWorld>(true); }}};
    if (access("/dev/snd/seq", R_OK | W_OK) == 0) {
        kinds.push_back({"AlsaPackets", [] { return std::make_unique<AlsaWorld>(false); }});
        kinds.push_back({"AlsaEvents", [] { return std::make_unique<AlsaWorld>(true); }});
    }
    return kinds;
}

std::vector<Kind> allKinds() {
    std::vector<Kind> kinds = kindsWithDevices();
    kinds.push_back({"None", [] { return std::make_unique<NoDevices>(); }});
    return kinds;
}

} // namespace deckmate::test
