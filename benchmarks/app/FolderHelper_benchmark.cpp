// What a listing costs the window, which makes one every five seconds.
#include "app/FolderHelper.h"

#include "support/TemporaryFolder.h"

#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstdio>
#include <string>

namespace {

using namespace deckmate;

/// Recordings as the device names them, in an order that is not the listing's.
class ManyRecordings {
public:
    explicit ManyRecordings(std::int64_t count) {
        for (std::int64_t i = 0; i < count; ++i) {
            char name[32];
            std::snprintf(name, sizeof name, "H8_%05lld.WAV",
                          static_cast<long long>(i * 7919 % count));
            folder_.file(name, {});
        }
    }
    const std::filesystem::path& path() const { return folder_.path(); }

private:
    test::TemporaryFolder folder_;
};

void FolderHelper_list(benchmark::State& state) {
    const ManyRecordings recordings(state.range(0));
    for (auto _ : state) {
        const FolderHelper helper(recordings.path(), FileIcons{});
        if (helper.files().size() != static_cast<std::size_t>(state.range(0))) {
            state.SkipWithError("not all listed");
        }
    }
}
BENCHMARK(FolderHelper_list)->Unit(benchmark::kMillisecond)->Arg(100)->Arg(10'000)->Arg(100'000);

void FolderHelper_sortFileList(benchmark::State& state) {
    const ManyRecordings recordings(state.range(0));
    FolderHelper helper(recordings.path(), FileIcons{});
    helper.grabWavFiles();
    const auto unsorted = helper.files();
    for (auto _ : state) {
        state.PauseTiming();
        helper.setFiles(unsorted);
        state.ResumeTiming();
        helper.sortFileList();
    }
}
BENCHMARK(FolderHelper_sortFileList)->Unit(benchmark::kMillisecond)->Arg(10'000);

} // namespace
