// h8-simulator: a recorder in software.
#include "LineReader.h"
#include "Options.h"
#include "Simulator.h"
#include "common/Interruptible.h"
#include "common/LineOutput.h"
#include "common/Process.h"
#include "platform/MidiDevice.h"
#include "platform/qt/QtRunLoop.h"

#include <array>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <memory>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include <unistd.h>

namespace {

using namespace deckmate;
using namespace deckmate::tools;

void printError(const std::string& error) {
    std::fprintf(stderr, "h8-simulator: %s\n", error.c_str());
}

class Program {
public:
    explicit Program(Options options) : options_(std::move(options)) {}

    int run() {
        if (options_.hasMidi && !openDevice()) {
            return someFailed;
        }
        simulator_.remark("ready: " + place());
        for (const ParsedCommand& command : options_.commands) {
            command.run(simulator_);
        }
        input_ = loop_.watchReadable(STDIN_FILENO, [this] { readInput(); });
        if (!isDone_) {
            loop_.run();
        }
        return allDone;
    }

private:
    Simulator::Outside outside() {
        return {
            .send = [this](ByteView bytes) { return device_ == nullptr || device_->send(bytes); },
            .print = [](const std::string& line) { printLine(STDOUT_FILENO, line); },
            .time =
                [begin = std::chrono::steady_clock::now()] {
                    return std::chrono::steady_clock::now() - begin;
                },
            .leave = [this](const std::string& reason) { leave(reason); },
        };
    }

    bool openDevice() {
        const auto reader = [this](ByteView bytes) { simulator_.receive(bytes); };
        const auto gone = [this] { leave("the MIDI device is gone"); };
        std::string error;
        device_ = options_.rawDevice.empty()
                      ? MidiDevice::openSequencerPort(options_.name, reader, gone, error)
                      : MidiDevice::openRaw(options_.rawDevice, reader, gone, error);
        if (device_ == nullptr) {
            printError(place() + ": " + error);
        }
        return device_ != nullptr;
    }

    std::string place() const {
        if (!options_.hasMidi) {
            return "no MIDI";
        }
        return options_.rawDevice.empty() ? "port " + options_.name : options_.rawDevice;
    }

    void leave(const std::string& reason) {
        if (!isDone_) {
            simulator_.remark("end: " + reason);
            isDone_ = true;
            loop_.quit();
        }
    }

    void readInput() {
        std::array<char, 65536> text = {};
        const ssize_t size = read(STDIN_FILENO, text.data(), text.size());
        if (size > 0) {
            execute(lines_.read({text.data(), static_cast<std::size_t>(size)}));
        } else if (size == 0 || (errno != EINTR && errno != EAGAIN)) {
            execute(lines_.finish());
            if (options_.isDaemon) {
                loop_.runLater([this] { input_.reset(); });
            } else {
                leave("end of input");
            }
        }
    }

    void execute(const std::vector<LineReader::Line>& lines) {
        for (const LineReader::Line& line : lines) {
            if (isDone_) {
                return;
            }
            const ParsedCommand command =
                line ? parseCommand(*line) : ParsedCommand{nullptr, "line too long"};
            if (command.run) {
                command.run(simulator_);
            } else {
                printError(command.error);
            }
        }
    }

    Options options_;
    bool isDone_ = false;
    QtRunLoop loop_;
    Simulator simulator_{loop_, outside()};
    LineReader lines_;
    std::unique_ptr<MidiDevice> device_;
    std::unique_ptr<DescriptorWatch> input_;
    Interruptible interruptible_{loop_.makeSignal([this] { leave("interrupted"); })};
};

int simulate(int argc, char** argv) {
    std::variant<Options, int> parsed = parseOptions(argc, argv);
    if (const int* status = std::get_if<int>(&parsed)) {
        return *status;
    }
    return Program(std::move(std::get<Options>(parsed))).run();
}

} // namespace

int main(int argc, char** argv) {
    return runProgram("h8-simulator", argc, argv, simulate);
}
