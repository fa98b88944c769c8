#include "Options.h"

#include "common/CommandLine.h"
#include "recording/SideLevelCoef.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <thread>

namespace deckmate::tools {

namespace {

constexpr double gainLimit = 36;

constexpr const char* description =
    "Decodes recordings of the ORLO H8 into ordinary stereo Broadcast Wave files.\n"
    "Raw mid/side recordings are decoded at the chosen stereo width, others keep their channels.";

constexpr const char* examples =
    "Examples:\n"
    "  h8-decode take.wav                       writes take_Decode.WAV beside it\n"
    "  h8-decode --angle 90 --gain 3 *.wav      narrower and 3 dB louder\n"
    "  h8-decode --normalize --format 32f --output-dir mixes *.wav\n"
    "  h8-decode --info take.wav                what the file holds, as JSON\n"
    "\n"
    "Exit status: 0 all done, 1 some file failed, 2 wrong usage.";

std::size_t numberOfCores() {
    return std::max(1U, std::thread::hardware_concurrency());
}

} // namespace

std::variant<Options, int> parseOptions(int argc, char** argv) {
    Options options;
    options.jobs = numberOfCores();

    CommandLine line("h8-decode", description);
    line.footer(examples);
    auto* info =
        line.add_flag("--info", options.info, "Print one JSON object per file, decode nothing");
    const auto decoding = [&](CLI::Option* option) { return option->excludes(info); };

    decoding(line.add_option_function<std::string>(
                 "--angle",
                 [&](const std::string& text) {
                     options.angle = numberWithin("--angle", text, 0, maxAngle);
                 },
                 "Stereo width 0..150: 0 mono, 120 as recorded (default), 150 widest"))
        ->type_name("N");
    decoding(line.add_option_function<std::string>(
                 "--gain",
                 [&](const std::string& text) {
                     options.gain = numberWithin("--gain", text, -gainLimit, gainLimit);
                 },
                 "Gain in decibels, -36..36, positive is louder (default 0)"))
        ->type_name("DB");
    decoding(line.add_flag("--normalize", options.choices.isNormalize,
                           "Scale to a peak of full scale; the gain is ignored"));
    decoding(line.add_option_function<std::string>(
                 "--format",
                 [&](const std::string& text) { options.choices.is24bit = text == "24"; },
                 "Samples: 24-bit linear (default) or 32-bit float"))
        ->type_name("24|32f")
        ->check([](const std::string& text) {
            return text == "24" || text == "32f" ? "" : "\"" + text + "\" is neither 24 nor 32f";
        });
    auto* output = decoding(line.add_option_function<std::string>(
                                "--output",
                                [&](const std::string& text) {
                                    options.output = CommandLine::asGiven(text);
                                    if (options.output->filename().empty()) {
                                        throw CLI::ValidationError("--output", "names no file");
                                    }
                                },
                                "The file to write, for a single source"))
                       ->type_name("PATH");
    decoding(line.add_option_function<std::string>(
                 "--output-dir",
                 [&](const std::string& text) {
                     options.outputDir = CommandLine::asGiven(text);
                     if (options.outputDir->empty()) {
                         throw CLI::ValidationError("--output-dir", "names no folder");
                     }
                 },
                 "The folder to write to (default: beside each source)"))
        ->type_name("DIR")
        ->excludes(output);
    decoding(line.add_flag("--force", options.force, "Overwrite targets that exist"));
    decoding(line.add_option_function<std::string>(
                 "--jobs",
                 [&](const std::string& text) {
                     options.jobs = wholeNumberWithin("--jobs", text, 1,
                                                      std::numeric_limits<std::uint32_t>::max());
                 },
                 "Files decoded at the same time (default: the number of cores)"))
        ->type_name("N");
    line.add_option("FILE", options.files, "Recordings")->required()->type_name("");
    line.callback([&] {
        if (options.output && options.files.size() > 1) {
            throw CLI::ValidationError("--output", "takes a single FILE");
        }
    });

    if (const std::optional<int> status = line.run(argc, argv)) {
        return *status;
    }
    for (std::string& file : options.files) {
        file = CommandLine::asGiven(file);
    }
    return options;
}

} // namespace deckmate::tools
