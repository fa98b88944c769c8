// What the user sees of a batch: a line per file, and a progress bar on a terminal.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <optional>
#include <string_view>
#include <vector>

namespace deckmate::tools {

struct DecodeJob;

/// Files that were decoded go to standard output as "source -> target", failures to standard error
/// as "source: reason", all in the order of the jobs whatever order they end in. On a terminal the
/// last line is a progress bar. Takes no memory after its creation. Any thread; `jobs` must outlive
/// it.
class DecodeReport {
public:
    explicit DecodeReport(const std::vector<DecodeJob>& jobs);

    void advanced(std::size_t job, std::uint64_t done, std::uint64_t total);
    /// An empty `failure` is success; else a text that outlives this. Each job ends once.
    void ended(std::size_t job, std::string_view failure);
    /// Takes the bar away; whether no job failed.
    bool finish();

private:
    void print(std::size_t job);
    void setShare(std::size_t job, double share);
    void showBar();
    void hideBar();

    const std::vector<DecodeJob>& jobs_;
    const bool hasBar_;
    std::mutex lock_;
    std::vector<std::optional<std::string_view>> failures_; ///< set for the jobs that have ended
    std::vector<double> shares_;                            ///< of each job, 0..1
    double sumOfShares_ = 0;
    std::size_t printed_ = 0;
    bool isBarShown_ = false;
    bool hasFailure_ = false;
    std::chrono::steady_clock::time_point lastShown_;
};

} // namespace deckmate::tools
