// Lists a folder without keeping the main thread waiting for it.
#pragma once

#include "platform/RunLoop.h"

#include <filesystem>
#include <functional>
#include <memory>

namespace deckmate {

class FolderHelper;

/// A folder on a medium that hardly answers, or no longer, delays its own listing and nothing else.
/// Thread: main.
class FolderLister {
public:
    using Listing = std::shared_ptr<FolderHelper>;

    /// `list` makes the listing of a folder, on another thread, perhaps after this is gone. `show`
    /// is given it from the event loop.
    FolderLister(std::function<Listing(const std::filesystem::path&)> list,
                 std::function<void(const Listing&)> show);
    /// Waits half a second at most for a listing that is on its way.
    ~FolderLister();
    FolderLister(const FolderLister&) = delete;
    FolderLister& operator=(const FolderLister&) = delete;
    FolderLister(FolderLister&&) = delete;
    FolderLister& operator=(FolderLister&&) = delete;

    /// Nothing while an earlier one is on its way, or where no thread is to be had.
    void start(const std::filesystem::path& folder);
    /// What is on its way isn't shown.
    void forget();

private:
    struct Pending;

    void finish();

    std::function<Listing(const std::filesystem::path&)> list_;
    std::function<void(const Listing&)> show_;
    std::unique_ptr<Signal> news_;
    std::shared_ptr<Pending> pending_; ///< null for none
};

} // namespace deckmate
