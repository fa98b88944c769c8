// h8-decode: the exporter on the command line.
#include "DecodeJobs.h"
#include "InfoJson.h"
#include "Options.h"
#include "common/Process.h"

#include <cstdio>

int main(int argc, char** argv) {
    using namespace deckmate::tools;
    prepareProcess();
    const std::variant<Options, int> parsed = parseOptions(argc, argv);
    if (const int* status = std::get_if<int>(&parsed)) {
        return *status;
    }
    const Options& options = std::get<Options>(parsed);
    if (options.info) {
        return printInfo(options.files, stdout);
    }
    return runJobs(planJobs(options), options);
}
