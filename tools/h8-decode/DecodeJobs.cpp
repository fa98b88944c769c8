#include "DecodeJobs.h"

#include "DecodeReport.h"
#include "common/Process.h"
#include "export/Export.h"

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <map>
#include <mutex>
#include <new>
#include <string_view>
#include <system_error>
#include <thread>

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
        std::vector<std::size_t> earlier;
        const auto note = [&](std::map<std::string, std::size_t>& last, const std::string& name) {
            const auto found = last.find(name);
            if (found != last.end()) {
                earlier.push_back(found->second);
            }
        };
        const std::vector<std::string> sources = identities(files.source);
        const std::vector<std::string> targets = identities(files.target);
        for (const std::string& name : sources) {
            note(lastWriter_, name);
        }
        for (const std::string& name : targets) {
            note(lastWriter_, name);
            note(lastReader_, name);
        }
        for (const std::string& name : sources) {
            lastReader_[name] = job;
        }
        for (const std::string& name : targets) {
            lastWriter_[name] = job;
        }
        return earlier;
    }

private:
    std::map<std::string, std::size_t> lastWriter_;
    std::map<std::string, std::size_t> lastReader_;
};

std::filesystem::path targetFor(const std::filesystem::path& source, const Options& options) {
    if (options.output) {
        return withWavEnding(*options.output);
    }
    return options.outputDir.value_or(source.parent_path()) / proposedName(source);
}

/// Returns why the file could not be decoded; empty when it was.
std::string_view decode(const DecodeJob& job, const Options& options,
                        Export::Progress progress) try {
    if (isSameFile(job.target, job.source)) {
        return alertText(SaveOutcome::refused);
    }
    std::error_code error;
    // A link that leads nowhere is in the way, too.
    if (!options.force &&
        std::filesystem::exists(std::filesystem::symlink_status(job.target, error))) {
        return "File exists.";
    }
    Export recording(job.source);
    if (!recording.IsFileValid()) {
        return "File not supported.";
    }
    recording.setAngle(options.angle);
    recording.setGain(options.gain);
    recording.setProgress(std::move(progress));
    return alertText(saveDecoded(recording, job.target, options.choices));
} catch (const std::bad_alloc&) {
    return alertText(SaveOutcome::failed);
}

class Runner {
public:
    Runner(const std::vector<DecodeJob>& jobs, const Options& options)
        : jobs_(jobs), options_(options), report_(jobs), isDone_(jobs.size(), false) {}

    int run() {
        std::vector<std::thread> helpers;
        try {
            while (helpers.size() + 1 < std::min(options_.jobs, jobs_.size())) {
                helpers.emplace_back([this] { work(); });
            }
        } catch (const std::system_error&) {
            // No more threads to be had: those that run do all the work.
        }
        work();
        for (std::thread& helper : helpers) {
            helper.join();
        }
        return report_.finish() ? allDone : someFailed;
    }

private:
    // Jobs are taken in order and wait only for earlier ones, so the first one running never waits.
    void work() {
        for (std::size_t job = next_++; job < jobs_.size(); job = next_++) {
            waitForEarlier(jobs_[job]);
            const std::string_view failure =
                decode(jobs_[job], options_, [&](std::uint64_t done, std::uint64_t total) {
                    report_.advanced(job, done, total);
                });
            report_.ended(job, failure);
            const std::lock_guard guard(lock_);
            isDone_[job] = true;
            someDone_.notify_all();
        }
    }

    void waitForEarlier(const DecodeJob& job) {
        std::unique_lock guard(lock_);
        someDone_.wait(guard, [&] {
            return std::all_of(job.after.begin(), job.after.end(),
                               [&](std::size_t earlier) { return isDone_[earlier]; });
        });
    }

    const std::vector<DecodeJob>& jobs_;
    const Options& options_;
    DecodeReport report_;
    std::atomic<std::size_t> next_ = 0;
    std::mutex lock_;
    std::condition_variable someDone_;
    std::vector<bool> isDone_;
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
