#include "DecodeReport.h"

#include "DecodeJobs.h"

#include <algorithm>
#include <cstdio>

#include <unistd.h>

namespace deckmate::tools {

namespace {

constexpr std::chrono::milliseconds barInterval(50);
constexpr int barWidth = 40;

} // namespace

DecodeReport::DecodeReport(const std::vector<DecodeJob>& jobs)
    : jobs_(jobs), hasBar_(::isatty(STDOUT_FILENO) == 1), failures_(jobs.size()),
      shares_(jobs.size(), 0.0) {}

void DecodeReport::advanced(std::size_t job, std::uint64_t done, std::uint64_t total) {
    const std::lock_guard guard(lock_);
    setShare(job, static_cast<double>(done) / static_cast<double>(total));
    if (hasBar_ && std::chrono::steady_clock::now() - lastShown_ >= barInterval) {
        showBar();
    }
}

void DecodeReport::ended(std::size_t job, std::string_view failure) {
    const std::lock_guard guard(lock_);
    failures_[job] = failure;
    setShare(job, 1.0);
    for (; printed_ < jobs_.size() && failures_[printed_]; ++printed_) {
        print(printed_);
    }
    if (hasBar_) {
        showBar();
    }
}

bool DecodeReport::finish() {
    const std::lock_guard guard(lock_);
    hideBar();
    return !hasFailure_;
}

void DecodeReport::print(std::size_t job) {
    const DecodeJob& files = jobs_[job];
    const std::string_view failure = *failures_[job];
    hideBar();
    if (failure.empty()) {
        std::printf("%s -> %s\n", files.source.c_str(), files.target.c_str());
        std::fflush(stdout);
    } else {
        // Standard error has no buffer of its own: one call, so that no other program's words come
        // in between.
        std::fprintf(stderr, "%s: %.*s\n", files.source.c_str(), static_cast<int>(failure.size()),
                     failure.data());
        hasFailure_ = true;
    }
}

void DecodeReport::setShare(std::size_t job, double share) {
    sumOfShares_ += share - shares_[job];
    shares_[job] = share;
}

void DecodeReport::showBar() {
    constexpr const char* full = "########################################";
    constexpr const char* empty = "........................................";
    const double share = sumOfShares_ / static_cast<double>(jobs_.size());
    const int filled = std::clamp(static_cast<int>(share * barWidth), 0, barWidth);
    std::printf("\r[%.*s%.*s] %d %%  %zu of %zu files\x1b[K", filled, full, barWidth - filled,
                empty, static_cast<int>(share * 100), printed_, jobs_.size());
    std::fflush(stdout);
    isBarShown_ = true;
    lastShown_ = std::chrono::steady_clock::now();
}

void DecodeReport::hideBar() {
    if (isBarShown_) {
        std::fputs("\r\x1b[K", stdout);
        std::fflush(stdout);
        isBarShown_ = false;
    }
}

} // namespace deckmate::tools
