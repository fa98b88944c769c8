// h8-sample: makes recordings to try the other programs with.
#include "SampleRecording.h"
#include "common/CommandLine.h"
#include "common/Process.h"
#include "export/OutputFile.h"

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <limits>
#include <optional>
#include <string>
#include <system_error>

namespace {

using namespace deckmate;
using namespace deckmate::tools;

int fail(const std::string& file, const char* why) {
    std::fprintf(stderr, "%s: %s\n", file.c_str(), why);
    return someFailed;
}

int makeSample(int argc, char** argv) {
    SampleRecording recording;
    double seconds = 10;
    std::string output;
    bool isPlain = false;
    bool isForced = false;

    CommandLine line("h8-sample",
                     "Makes a recording as the ORLO H8 writes them: a voice that moves "
                     "from side to side.");
    line.footer("Examples:\n"
                "  h8-sample take.wav                          10 seconds, raw mid/side, 24 bit\n"
                "  h8-sample --plain --format 16 stereo.wav    left and right, 16 bit\n"
                "  h8-sample --rate 96000 --seconds 3600 long.wav");
    line.add_flag("--plain", isPlain, "Left and right instead of raw mid and side");
    line.add_option("--format", "16, 24 or 32f (default 24)")
        ->type_name("16|24|32f")
        ->transform(CLI::IsMember({"16", "24", "32f"}))
        ->each([&](const std::string& text) {
            recording.format = text == "16"   ? SampleFormat::pcm16
                               : text == "24" ? SampleFormat::pcm24
                                              : SampleFormat::float32;
        });
    line.add_option_function<std::string>(
            "--rate",
            [&](const std::string& text) {
                recording.sampleRate = static_cast<std::uint32_t>(wholeNumberWithin(
                    "--rate", text, 1, std::numeric_limits<std::uint32_t>::max()));
            },
            "Frames per second (default 48000)")
        ->type_name("N");
    line.add_option_function<std::string>(
            "--seconds",
            [&](const std::string& text) { seconds = numberWithin("--seconds", text, 0, 1e9); },
            "Length, decimals allowed (default 10)")
        ->type_name("S");
    line.add_flag("--force", isForced, "Overwrite a file that exists");
    line.add_option("FILE", output, "The recording to write")->required()->type_name("");
    line.callback([&] {
        recording.isRaw = !isPlain;
        recording.frames = static_cast<std::uint64_t>(std::llround(seconds * recording.sampleRate));
        if (!isWritable(recording)) {
            throw CLI::ValidationError("--seconds",
                                       "a recording that long doesn't fit into a WAV file");
        }
    });
    if (const std::optional<int> status = line.run(argc, argv)) {
        return *status;
    }

    output = CommandLine::asGiven(output);
    std::error_code error;
    if (!isForced && std::filesystem::exists(std::filesystem::symlink_status(output, error))) {
        return fail(output, "File exists.");
    }
    OutputBuffer file;
    if (!makeRecording(recording, file) ||
        !writeWholeFile(output, file.bytes(), {.untouchable = {}, .mayOverwrite = isForced})) {
        return fail(output, "Fail to save.");
    }
    return allDone;
}

} // namespace

int main(int argc, char** argv) {
    return runProgram("h8-sample", argc, argv, makeSample);
}
