#include "DecodeReport.h"

#include "DecodeJobs.h"

#include <cstdio>
#include <numeric>

#include <unistd.h>

namespace deckmate::tools {

namespace {

constexpr std::chrono::milliseconds barInterval(50);
constexpr std::size_t barWidth = 40;

/// In one call, so that a line is not torn apart by another program's.
void put(std::FILE* stream, const std::string& text) {
    std::fwrite(text.data(), 1, text.size(), stream);
    std::fflush(stream);
}

} // namespace

DecodeReport::DecodeReport(const std::vector<DecodeJob>& jobs)
    : jobs_(jobs), hasBar_(::isatty(STDOUT_FILENO) == 1), failures_(jobs.size()),
      shares_(jobs.size(), 0.0) {}

void DecodeReport::advanced(std::size_t job, std::uint64_t done, std::uint64_t total) {
    const std::lock_guard guard(lock_);
    shares_[job] = static_cast<double>(done) / static_cast<double>(total);
    if (hasBar_ && std::chrono::steady_clock::now() - lastShown_ >= barInterval) {
        showBar();
    }
}

void DecodeReport::ended(std::size_t job, std::string_view failure) {
    const std::lock_guard guard(lock_);
    failures_[job] = failure;
    shares_[job] = 1.0;
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
    const std::string& failure = *failures_[job];
    hideBar();
    if (failure.empty()) {
        put(stdout, jobs_[job].source + " -> " + jobs_[job].target.native() + "\n");
    } else {
        put(stderr, jobs_[job].source + ": " + failure + "\n");
        hasFailure_ = true;
    }
}

void DecodeReport::showBar() {
    const double sum = std::accumulate(shares_.begin(), shares_.end(), 0.0);
    const double share = sum / static_cast<double>(jobs_.size());
    const auto filled = static_cast<std::size_t>(share * barWidth);
    put(stdout, "\r[" + std::string(filled, '#') + std::string(barWidth - filled, '.') + "] " +
                    std::to_string(static_cast<int>(share * 100)) + " %  " +
                    std::to_string(printed_) + " of " + std::to_string(jobs_.size()) +
                    " files\x1b[K");
    isBarShown_ = true;
    lastShown_ = std::chrono::steady_clock::now();
}

void DecodeReport::hideBar() {
    if (isBarShown_) {
        put(stdout, "\r\x1b[K");
        isBarShown_ = false;
    }
}

} // namespace deckmate::tools
