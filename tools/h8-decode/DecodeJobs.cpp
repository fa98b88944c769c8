#include "DecodeJobs.h"

#include "DecodeReport.h"
#include "MemoryBudget.h"
#include "common/Process.h"
#include "export/Export.h"
#include "recording/Parallel.h"
#include "recording/RecordingFile.h"

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <map>
#include <mutex>
#include <new>
#include <shared_mutex>
#include <string_view>
#include <system_error>
#include <utility>

#include <sys/stat.h>

namespace deckmate::tools {

namespace {

/// Where a chain of links leads, even if nothing is there yet.
std::filesystem::path followed(std::filesystem::path path) {
    constexpr int longestChain = 40; // as the system's own
    std::error_code error;
    for (int i = 0; i < longestChain && std::filesystem::is_symlink(path, error); ++i) {
        path = path.parent_path() / std::filesystem::read_symlink(path, error);
    }
    return path;
}

/// Names under which two paths may be found to be one file. Letter case is folded, as some file
/// systems do: taking two files for one costs only a wait.
std::vector<std::string> identities(const std::filesystem::path& path) {
    std::error_code error;
    // Of a relative path that doesn't exist yet nothing would be resolved.
    const std::filesystem::path absolute = std::filesystem::absolute(followed(path), error);
    std::string name = std::filesystem::weakly_canonical(absolute, error).native();
    if (error) {
        name = absolute.lexically_normal().native();
    }
    std::transform(name.begin(), name.end(), name.begin(), [](char character) {
        return character >= 'A' && character <= 'Z' ? static_cast<char>(character - 'A' + 'a')
                                                    : character;
    });
    std::vector<std::string> found{"name " + name};
    struct stat status = {};
    if (::stat(path.c_str(), &status) == 0) {
        found.push_back("inode " + std::to_string(status.st_dev) + " " +
                        std::to_string(status.st_ino));
    }
    return found;
}

/// Finds the earlier jobs that a job must wait for.
class Precedence {
public:
    std::vector<std::size_t> add(std::size_t job, const DecodeJob& files) {
        const std::vector<std::string> sources = identities(files.source);
        const std::vector<std::string> targets = identities(files.target);
        std::vector<std::size_t> earlier;
        for (const std::string& name : sources) {
            const Users& users = users_[name];
            earlier.insert(earlier.end(), users.writer.begin(), users.writer.end());
        }
        for (const std::string& name : targets) {
            const Users& users = users_[name];
            earlier.insert(earlier.end(), users.writer.begin(), users.writer.end());
            earlier.insert(earlier.end(), users.readers.begin(), users.readers.end());
        }
        for (const std::string& name : sources) {
            users_[name].readers.push_back(job);
        }
        for (const std::string& name : targets) {
            users_[name] = {{job}, {}}; // whoever waits for this job waits for those before it
        }
        return earlier;
    }

private:
    struct Users {
        std::vector<std::size_t> writer;  ///< the last one, if any
        std::vector<std::size_t> readers; ///< all since then
    };
    std::map<std::string, Users> users_;
};

std::filesystem::path targetFor(const std::filesystem::path& source, const Options& options) {
    if (options.output) {
        return withWavEnding(*options.output);
    }
    return options.outputDir.value_or(source.parent_path()) / proposedName(source);
}

struct Outcome {
    std::string_view failure; ///< empty when the file was decoded
    bool isScarce = false;    ///< it might be decoded with more memory or descriptors
};

/// A link that leads nowhere is in the way, too.
bool isThere(const std::filesystem::path& path) {
    std::error_code error;
    return std::filesystem::exists(std::filesystem::symlink_status(path, error));
}

Outcome decode(const DecodeJob& job, const Options& options, Export::Progress progress) try {
    if (isSameFile(job.target, job.source)) {
        return {alertText(SaveOutcome::refused)};
    }
    if (!options.force && isThere(job.target)) {
        return {"File exists."};
    }
    LoadedFile loaded = readWholeFile(job.source);
    Export recording(job.source, std::move(loaded.bytes));
    if (!recording.IsFileValid()) {
        return {"File not supported.", loaded.isScarce};
    }
    recording.setAngle(options.angle);
    recording.setGain(options.gain);
    recording.setMayOverwrite(options.force);
    recording.setProgress(std::move(progress));
    const SaveOutcome outcome = saveDecoded(recording, job.target, options.choices);
    // What was written of a new target stays, and is then in the way of a second attempt.
    const bool mayTryAgain = options.force || !isThere(job.target);
    return {alertText(outcome), outcome == SaveOutcome::failed && mayTryAgain};
} catch (const std::bad_alloc&) {
    return {alertText(SaveOutcome::failed), true};
}

class Runner {
public:
    Runner(const std::vector<DecodeJob>& jobs, const Options& options)
        : jobs_(jobs), options_(options), memory_(MemoryBudget::ofThisMachine()), report_(jobs),
          isDone_(jobs.size(), 0) {}

    int run() {
        const std::size_t threads = std::min({options_.jobs, jobs_.size(), mostThreads});
        inParallel(threads, threads, [this](std::size_t) { work(); });
        return report_.finish() ? allDone : someFailed;
    }

private:
    static constexpr std::size_t mostThreads = 64;

    // Jobs are taken in order and wait only for earlier ones, so the first one running never waits.
    void work() noexcept {
        for (std::size_t job = next_++; job < jobs_.size(); job = next_++) {
            waitForEarlier(jobs_[job]);
            report_.ended(job, decodeOrRepeat(job));
            const std::lock_guard guard(lock_);
            isDone_[job] = 1;
            someDone_.notify_all();
        }
    }

    /// What failed beside others for want of something is tried again alone, so that the results
    /// are those of decoding one file after another.
    std::string_view decodeOrRepeat(std::size_t job) {
        const auto attempt = [&] {
            return decode(jobs_[job], options_,
                          [this, job](std::uint64_t done, std::uint64_t total) {
                              report_.advanced(job, done, total);
                          });
        };
        Outcome outcome;
        {
            const MemoryBudget::Share share(memory_, expectedMemory(jobs_[job]));
            const std::shared_lock beside(alone_);
            outcome = attempt();
        }
        if (outcome.isScarce && options_.jobs > 1) {
            const std::unique_lock guard(alone_);
            outcome = attempt();
        }
        return outcome.failure;
    }

    std::uint64_t expectedMemory(const DecodeJob& job) const {
        struct stat status = {};
        if (::stat(job.source.c_str(), &status) != 0) {
            return 0;
        }
        return static_cast<std::uint64_t>(status.st_size);
    }

    void waitForEarlier(const DecodeJob& job) {
        std::unique_lock guard(lock_);
        someDone_.wait(guard, [&] {
            return std::all_of(job.after.begin(), job.after.end(),
                               [&](std::size_t earlier) { return isDone_[earlier] != 0; });
        });
    }

    const std::vector<DecodeJob>& jobs_;
    const Options& options_;
    MemoryBudget memory_;
    DecodeReport report_;
    std::atomic<std::size_t> next_ = 0;
    std::shared_mutex alone_; ///< held shared by who decodes beside others
    std::mutex lock_;         ///< of what follows
    std::condition_variable someDone_;
    std::vector<char> isDone_;
};

} // namespace

std::vector<DecodeJob> planJobs(const Options& options) {
    std::vector<DecodeJob> jobs;
    Precedence precedence;
    for (const std::string& source : options.files) {
        DecodeJob job{source, targetFor(source, options), {}};
        job.after = precedence.add(jobs.size(), job);
        jobs.push_back(std::move(job));
    }
    return jobs;
}

int runJobs(const std::vector<DecodeJob>& jobs, const Options& options) {
    return Runner(jobs, options).run();
}

} // namespace deckmate::tools
