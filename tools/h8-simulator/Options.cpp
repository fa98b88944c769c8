#include "h8-simulator/Options.h"

#include "common/CommandLine.h"

#include <array>
#include <optional>
#include <string_view>
#include <utility>

namespace deckmate::tools {

namespace {

constexpr const char* description =
    "Plays the recorder of the ORLO H8 on a MIDI port, so that the desktop companion finds one.\n"
    "Commands on standard input change its state and make it misbehave.";

constexpr const char* examples = "Commands:\n";

constexpr const char* statuses = "\nExit status: 0 ended, 1 no such MIDI port or device, "
                                 "2 wrong usage.";

/// An option that stands for a command.
struct Shorthand {
    const char* option;
    const char* value; ///< null for a flag
    const char* help;
    const char* command;
};

constexpr std::array shorthands = {
    Shorthand{"--card", "in|out|N", "A memory card is in it, or none (default in)", "card"},
    Shorthand{"--used", "SIZE", "Used space of the card (default 7.5GB)", "used"},
    Shorthand{"--max", "SIZE", "Capacity of the card (default 29.8GB)", "max"},
    Shorthand{"--remaining", "HH:MM:SS", "Recording time left (default 23:05:00)", "remaining"},
    Shorthand{"--firmware", "XXXX", "Its version, four characters (default 0100)", "version"},
    Shorthand{"--id", "HEX", "Four bytes of its identity (default 52000000)", "id"},
    Shorthand{"--battery", "N", "Battery type (default 0)", "battery"},
    Shorthand{"--power-off", "N", "Automatic power-off (default 1)", "power-off"},
    Shorthand{"--report-every", "SECONDS", "Send the card state again and again", "report every"},
    Shorthand{"--silent", "N|all", "Don't answer the Nth request", "silent"},
    Shorthand{"--split", "N", "Send in pieces of N bytes", "split"},
    Shorthand{"--merge", nullptr, "Send each reply with the message after it", "merge"},
    Shorthand{"--twice", nullptr, "Send each reply two times", "twice"},
    Shorthand{"--delay", "MS", "Send so many milliseconds later", "delay"},
    Shorthand{"--seed", "N", "For the bytes of garbage", "seed"},
};

ParsedCommand parsed(const std::string& command) {
    ParsedCommand result = parseCommand(command);
    if (!result.run) {
        throw CLI::ValidationError(result.error);
    }
    return result;
}

void addCommands(CommandLine& line, std::vector<ParsedCommand>& commands) {
    for (const Shorthand& shorthand : shorthands) {
        const std::string command = shorthand.command;
        if (shorthand.value == nullptr) {
            line.add_flag_callback(
                shorthand.option, [&commands, command] { commands.push_back(parsed(command)); },
                shorthand.help);
        } else {
            line.add_option_function<std::string>(
                    shorthand.option,
                    [&commands, command](const std::string& value) {
                        commands.push_back(parsed(command + " " + CommandLine::asGiven(value)));
                    },
                    shorthand.help)
                ->type_name(shorthand.value);
        }
    }
    line.add_option_function<std::vector<std::string>>(
            "--do",
            [&commands](const std::vector<std::string>& values) {
                for (const std::string& value : values) {
                    commands.push_back(parsed(CommandLine::asGiven(value)));
                }
            },
            "Any command, after the ones above; may be given again")
        ->type_name("COMMAND")
        ->expected(1)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
}

} // namespace

std::variant<Options, int> parseOptions(int argc, char** argv) {
    Options options;
    CommandLine line("h8-simulator", description);
    line.footer(examples + commandHelp() + statuses);
    auto* name = line.add_option("--name", options.name,
                                 "Of the sequencer port (default \"H8 ORLO MIDI 1\")")
                     ->type_name("NAME");
    auto* raw = line.add_option("--raw", options.rawDevice,
                                "A raw MIDI device instead, like /dev/snd/midiC1D0")
                    ->type_name("PATH")
                    ->excludes(name);
    line.add_flag_callback(
            "--no-midi", [&] { options.hasMidi = false; }, "Nothing but standard input and output")
        ->excludes(name)
        ->excludes(raw);
    line.add_flag("--daemon", options.isDaemon, "Go on at the end of standard input");
    addCommands(line, options.commands);
    line.callback([&] {
        if (raw->count() != 0 && options.rawDevice.empty()) {
            throw CLI::ValidationError("--raw", "names no device");
        }
    });

    if (const std::optional<int> status = line.run(argc, argv)) {
        return *status;
    }
    options.name = CommandLine::asGiven(options.name);
    options.rawDevice = CommandLine::asGiven(options.rawDevice);
    return options;
}

} // namespace deckmate::tools
