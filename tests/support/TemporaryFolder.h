// A folder of its own for each test.
#pragma once

#include "support/Bytes.h"

#include <filesystem>

namespace deckmate::test {

/// Made empty on creation, removed with all it holds at the end.
class TemporaryFolder {
public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    TemporaryFolder(TemporaryFolder&&) = delete;
    TemporaryFolder& operator=(TemporaryFolder&&) = delete;

    const std::filesystem::path& path() const { return path_; }
    std::filesystem::path operator/(const std::filesystem::path& name) const {
        return path_ / name;
    }
    /// Writes a file and returns its path.
    std::filesystem::path file(const std::filesystem::path& name, const Bytes& bytes) const;

private:
    std::filesystem::path path_;
};

/// The whole file; empty when it can't be read.
Bytes contentsOf(const std::filesystem::path& path);

} // namespace deckmate::test
