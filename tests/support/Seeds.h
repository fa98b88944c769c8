// Small files of every kind that an open recording can meet, by the reason of their refusal.
#pragma once

#include "support/Bytes.h"

#include <string>
#include <vector>

namespace deckmate::test {

struct Seed {
    std::string reason; ///< "accepted", "too-short", "not-riff-wave", "no-format", "no-data",
                        ///< "no-bext" or "other-originator"
    std::string name;
    Bytes bytes;
};

std::vector<Seed> seeds();

/// What recorder and cable do, as steps for the fuzzer of the link to the device; "accepted" or
/// "ignored".
std::vector<Seed> deviceSeeds();

} // namespace deckmate::test
