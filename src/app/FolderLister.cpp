#include "app/FolderLister.h"

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>

namespace deckmate {

namespace {

constexpr std::chrono::milliseconds patience{500};

} // namespace

/// Outlives the lister where the folder doesn't answer.
struct FolderLister::Pending {
    std::mutex lock;
    std::condition_variable end;
    Listing listing;
    bool isOver = false;
    Signal* news = nullptr; ///< null once nobody waits for it
};

FolderLister::FolderLister(std::function<Listing(const std::filesystem::path&)> list,
                           std::function<void(const Listing&)> show)
    : list_(std::move(list)), show_(std::move(show)),
      news_(RunLoop::main().makeSignal([this] { finish(); })) {}

FolderLister::~FolderLister() {
    const std::shared_ptr<Pending> pending = pending_;
    forget();
    if (pending) {
        std::unique_lock guard(pending->lock);
        pending->end.wait_for(guard, patience, [&] { return pending->isOver; });
    }
}

void FolderLister::start(const std::filesystem::path& folder) {
    if (pending_) {
        return;
    }
    pending_ = std::make_shared<Pending>();
    pending_->news = news_.get();
    try {
        std::thread([pending = pending_, list = list_, folder] {
            Listing listing = list(folder);
            const std::lock_guard guard(pending->lock);
            pending->isOver = true;
            pending->end.notify_all();
            if (pending->news != nullptr) {
                pending->listing = std::move(listing);
                pending->news->raise();
            }
        }).detach();
    } catch (const std::system_error&) {
        pending_ = nullptr;
    }
}

void FolderLister::forget() {
    if (const auto pending = std::exchange(pending_, nullptr)) {
        const std::lock_guard guard(pending->lock);
        pending->news = nullptr;
    }
}

void FolderLister::finish() {
    if (!pending_) {
        return;
    }
    Listing listing;
    {
        const std::lock_guard guard(pending_->lock);
        if (!pending_->isOver) {
            return; // the news is of one that was forgotten
        }
        listing = std::move(pending_->listing);
    }
    pending_ = nullptr;
    show_(listing);
}

} // namespace deckmate
