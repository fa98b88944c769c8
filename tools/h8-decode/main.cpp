// h8-decode: the exporter on the command line.
#include "DecodeJobs.h"
#include "InfoJson.h"
#include "Options.h"
#include "common/Process.h"

#include <cstdio>

namespace {

using namespace deckmate::tools;

int decodeOrTell(int argc, char** argv) {
    const std::variant<Options, int> parsed = parseOptions(argc, argv);
    if (const int* status = std::get_if<int>(&parsed)) {
        return *status;
    }
    const auto& options = std::get<Options>(parsed);
    if (options.info) {
        return printInfo(options.files, stdout);
    }
    return runJobs(planJobs(options), options);
}

} // namespace

int main(int argc, char** argv) {
    return runProgram("h8-decode", argc, argv, decodeOrTell);
}
