// Recordings that come and go, and a sound server that does.
#pragma once

#include "support/Bytes.h"
#include "support/SoundServer.h"
#include "support/TemporaryFolder.h"

#include <cstdint>
#include <filesystem>
#include <vector>

namespace deckmate::test {

/// Thread: the monkey's, after it was made.
class World {
public:
    /// With all files there are, and a server that runs.
    World();

    const std::filesystem::path& root() const { return folder_.path(); }
    std::filesystem::path takes() const { return root() / "takes"; }
    /// One that plays for a while, and one that can't be opened; both are always there, elsewhere.
    std::filesystem::path good() const { return root() / "kept" / "raw good.wav"; }
    std::filesystem::path bad() const { return root() / "kept" / "broken.wav"; }
    /// A folder of the tree, there or not.
    std::filesystem::path anyFolder(std::uint64_t which) const;
    /// A file, there or not. Of those that can be opened, the raw ones have "raw" in their names.
    std::filesystem::path anyFile(std::uint64_t which) const;

    void makeFile(std::uint64_t which) const;
    void removeFile(std::uint64_t which) const;
    void cutFile(std::uint64_t which) const;
    void removeFolder(std::uint64_t which) const;
    void makeFolder(std::uint64_t which) const;

    /// Killed if it is there, else started.
    void turnServer();
    /// Stands still, or goes on.
    void stallServer();
    void haveServer();
    void endServer() { server_.kill(); }

private:
    struct Take {
        std::filesystem::path name;
        Bytes bytes;
    };

    TemporaryFolder folder_;
    std::vector<Take> takes_;
    SoundServer server_;
    bool isServerUp_ = true;
    bool isServerStalled_ = false;
};

} // namespace deckmate::test
