// h8-device: asks the recorder, sets it, and watches it.
#include "DeviceLink.h"
#include "DeviceReport.h"
#include "common/CommandLine.h"
#include "common/Interruptible.h"
#include "common/LineOutput.h"
#include "common/Process.h"
#include "platform/alsa/AlsaMidi.h"
#include "platform/qt/QtRunLoop.h"

#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include <unistd.h>

namespace {

using namespace deckmate;
using namespace deckmate::tools;

constexpr std::uint64_t mostBatteryType = 127; // seven bits
constexpr std::uint64_t mostAutoPowerOff = 3;

struct Command {
    enum Kind { status, setBattery, setAutoPowerOff, watch } kind = status;
    bool isJson = false;
    std::uint8_t value = 0;
    std::chrono::milliseconds patience{10000};
};

int fail(const std::string& why) {
    std::fprintf(stderr, "h8-device: %s\n", why.c_str());
    return someFailed;
}

/// Standard output for results. What the link to the device logs there goes to standard error.
class Results {
public:
    Results() : descriptor_(dup(STDOUT_FILENO)) { dup2(STDERR_FILENO, STDOUT_FILENO); }
    ~Results() { close(descriptor_); }
    Results(const Results&) = delete;
    Results& operator=(const Results&) = delete;
    Results(Results&&) = delete;
    Results& operator=(Results&&) = delete;

    /// NO when the line could not be written, which is told unless it was not wanted any more.
    bool print(const std::string& line) const {
        if (printLine(descriptor_, line)) {
            return true;
        }
        if (errno != EPIPE && errno != EINTR) {
            fail(std::generic_category().message(errno));
        }
        return false;
    }

private:
    int descriptor_;
};

int printStatus(Results& results, const Command& command) {
    const ORLODeviceInfo& info = MIDISequenceManager::getDeviceInfo();
    if (command.isJson) {
        return results.print(reportJson(info)) ? allDone : someFailed;
    }
    for (const auto& [name, value] : reportLines(info)) {
        std::string line = name;
        line.resize(16, ' ');
        if (!results.print(line + value)) {
            return someFailed;
        }
    }
    return allDone;
}

/// YES when the recorder has acknowledged it.
bool change(QtRunLoop& loop, const Command& command) {
    MIDISequenceManager& sequences = MIDISequenceManager::get();
    bool isDone = false;
    const auto note = [&isDone] { isDone = true; };
    if (command.kind == Command::setBattery) {
        sequences.startChangeBatteryTypeSeq(command.value, note);
    } else {
        sequences.startChangeAutoPowOffSeq(command.value, note);
    }
    loop.runUntil([&] { return isDone || !sequences.isSeqRunning(); }, command.patience);
    return isDone;
}

/// A line for everything that is not as it was before.
class Watch {
public:
    explicit Watch(Results& results) : results_(results) {}

    /// NO when nobody reads any more.
    bool look(const DeviceLink& link) {
        if (link.isKnown() != wasKnown_) {
            wasKnown_ = link.isKnown();
            last_.clear();
            if (!results_.print(wasKnown_ ? "connected" : "disconnected")) {
                return false;
            }
        }
        if (!wasKnown_) {
            return true;
        }
        auto now = reportLines(MIDISequenceManager::getDeviceInfo());
        for (std::size_t i = 0; i < now.size(); ++i) {
            const bool isNew = last_.empty() || last_[i].second != now[i].second;
            if (isNew && !results_.print(now[i].first + ": " + now[i].second)) {
                return false;
            }
        }
        last_ = std::move(now);
        return true;
    }

private:
    Results& results_;
    bool wasKnown_ = false;
    std::vector<std::pair<std::string, std::string>> last_;
};

int watchDevice(QtRunLoop& loop, Results& results) {
    const Interruptible interruptible(loop.makeSignal([&loop] { loop.quit(); }));
    Watch watch(results);
    std::unique_ptr<DeviceLink> link;
    bool isRead = true;
    link = std::make_unique<DeviceLink>([&] {
        if (link && !watch.look(*link)) {
            isRead = false;
            loop.quit();
        }
    });
    if (!Interruptible::isInterrupted()) {
        loop.run();
    }
    return isRead || Interruptible::isInterrupted() ? allDone : someFailed;
}

/// `whyNoMidi` is empty where there is MIDI.
int askDevice(QtRunLoop& loop, Results& results, const Command& command,
              const std::string& whyNoMidi) {
    const DeviceLink link([] {});
    if (!DeviceLink::isThere()) {
        return fail("no recorder is connected" +
                    (whyNoMidi.empty() ? "" : " (no MIDI: " + whyNoMidi + ")"));
    }
    loop.runUntil([&] { return link.isKnown() || link.isSilent() || !DeviceLink::isThere(); },
                  command.patience);
    if (!link.isKnown()) {
        return fail("the recorder doesn't answer");
    }
    if (command.kind == Command::status) {
        return printStatus(results, command);
    }
    return change(loop, command) ? allDone : fail("the recorder doesn't answer");
}

int work(int argc, char** argv) {
    Command command;
    CommandLine line("h8-device", "Asks an ORLO H8 that is connected over USB, and sets it. "
                                  "Connecting sets the recorder's clock.");
    line.footer("Examples:\n"
                "  h8-device status --json\n"
                "  h8-device set battery 2\n"
                "  h8-device set auto-power-off 0\n"
                "  h8-device watch");
    line.require_subcommand(1);
    CLI::App* const status = line.add_subcommand("status", "Prints what is known of it");
    status->add_flag("--json", command.isJson, "As one line of JSON");
    CLI::App* const set = line.add_subcommand("set", "Changes a setting");
    set->require_subcommand(1);
    const auto addSetting = [&](const char* name, const char* what, Command::Kind kind,
                                std::uint64_t most) {
        CLI::App* const setting = set->add_subcommand(name, what);
        setting
            ->add_option_function<std::string>(
                "N",
                [&command, kind, name, most](const std::string& text) {
                    command.kind = kind;
                    command.value =
                        static_cast<std::uint8_t>(wholeNumberWithin(name, text, 0, most));
                },
                "Its number in the recorder")
            ->required()
            ->type_name("");
    };
    addSetting("battery", "The kind of batteries", Command::setBattery, mostBatteryType);
    addSetting("auto-power-off", "1, 2 or 3 for a time, 0 for never", Command::setAutoPowerOff,
               mostAutoPowerOff);
    line.add_subcommand("watch", "Prints a line for each change, until interrupted")->callback([&] {
        command.kind = Command::watch;
    });
    if (const std::optional<int> ended = line.run(argc, argv)) {
        return *ended;
    }

    Results results;
    QtRunLoop loop;
    std::string whyNoMidi;
    const std::unique_ptr<Midi> midi = makeAlsaMidi(&whyNoMidi);
    if (command.kind != Command::watch) {
        return askDevice(loop, results, command, whyNoMidi);
    }
    // Without MIDI nothing ever changes.
    return whyNoMidi.empty() ? watchDevice(loop, results) : fail("no MIDI: " + whyNoMidi);
}

} // namespace

int main(int argc, char** argv) {
    return runProgram("h8-device", argc, argv, work);
}
