// make-seeds FOLDER: writes the seed files, in a folder for each reason of refusal.
#include "support/Seeds.h"

#include <cstdio>
#include <filesystem>
#include <fstream>

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fputs("usage: make-seeds FOLDER\n", stderr);
        return 2;
    }
    for (const deckmate::test::Seed& seed : deckmate::test::seeds()) {
        const std::filesystem::path folder = std::filesystem::path(argv[1]) / seed.reason;
        std::filesystem::create_directories(folder);
        std::ofstream file(folder / (seed.name + ".wav"), std::ios::binary);
        file.write(reinterpret_cast<const char*>(seed.bytes.data()),
                   static_cast<std::streamsize>(seed.bytes.size()));
        if (!file.flush()) {
            return 1;
        }
    }
    return 0;
}
