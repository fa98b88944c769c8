// make-seeds FUZZER FOLDER: writes the seed files of a fuzzer, in a folder for each reason of
// refusal.
#include "support/Seeds.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string_view>

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fputs("usage: make-seeds FUZZER FOLDER\n", stderr);
        return 2;
    }
    const bool isDevice = std::string_view(argv[1]) == "DeviceLink";
    for (const deckmate::test::Seed& seed :
         isDevice ? deckmate::test::deviceSeeds() : deckmate::test::seeds()) {
        const std::filesystem::path folder = std::filesystem::path(argv[2]) / seed.reason;
        std::filesystem::create_directories(folder);
        std::ofstream file(folder / seed.name, std::ios::binary);
        file.write(reinterpret_cast<const char*>(seed.bytes.data()),
                   static_cast<std::streamsize>(seed.bytes.size()));
        if (!file.flush()) {
            return 1;
        }
    }
    return 0;
}
