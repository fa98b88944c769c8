// What a file holds, as a line of JSON.
#pragma once

#include <cstdio>
#include <string>
#include <vector>

namespace deckmate::tools {

/// Prints one JSON object per line and file, in ASCII: bytes of names that are not UTF-8 appear as
/// \xHH, texts of the file are taken as ISO 8859-1. Returns the exit status: failed where a file
/// gave no bytes or a line could not be written.
int printInfo(const std::vector<std::string>& files, std::FILE* stream);

} // namespace deckmate::tools
