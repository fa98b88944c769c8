// playback_benchmark RECORDING: what playing costs and how soon it answers, on a sound server of
// its own. The recording has to last some ten seconds.
#include "export/Export.h"
#include "platform/SoundSystem.h"
#include "platform/TaskThread.h"
#include "platform/cubeb/CubebBackend.h"
#include "platform/qt/QtRunLoop.h"
#include "playback/WavePlayer.h"
#include "services/EB.h"
#include "support/LogLines.h"
#include "support/SoundServer.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <exception>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <sys/resource.h>

namespace {

using namespace deckmate;
using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

double milliseconds(Clock::duration duration) {
    return std::chrono::duration<double, std::milli>(duration).count();
}

/// Notes when the newest stream takes its first frames.
class FirstFrames {
public:
    void begin() {
        begun_ = Clock::now();
        taken_ = Clock::time_point();
    }
    void note() {
        if (taken_.load() == Clock::time_point()) {
            taken_ = Clock::now();
        }
    }
    bool areTaken() const { return taken_.load() != Clock::time_point(); }
    double waited() const { return milliseconds(taken_.load() - begun_); }

private:
    Clock::time_point begun_;
    std::atomic<Clock::time_point> taken_ = Clock::time_point();
};

/// cubeb's streams, watched.
class WatchedBackend final : public OutputBackend {
public:
    explicit WatchedBackend(FirstFrames& first) : first_(first), backend_(makeCubebBackend()) {}

    std::unique_ptr<OutputStream> open(const OutputFormat& format, OutputSource& source) override {
        return std::make_unique<Stream>(*backend_, format, source, first_);
    }

private:
    class Stream final : public OutputStream, private OutputSource {
    public:
        Stream(OutputBackend& backend, const OutputFormat& format, OutputSource& source,
               FirstFrames& first)
            : source_(source), first_(first), stream_(backend.open(format, *this)) {}

        bool start() override { return stream_->start(); }
        bool stop() override { return stream_->stop(); }
        std::optional<std::uint64_t> position() override { return stream_->position(); }

    private:
        std::size_t fill(float* out, std::size_t frames) noexcept override {
            first_.note();
            return source_.fill(out, frames);
        }
        void drained() noexcept override { source_.drained(); }
        void failed() noexcept override { source_.failed(); }

        OutputSource& source_;
        FirstFrames& first_;
        std::unique_ptr<OutputStream> stream_;
    };

    FirstFrames& first_;
    std::unique_ptr<OutputBackend> backend_;
};

void report(const char* what, std::vector<double> values, const char* unit, double aim) {
    std::sort(values.begin(), values.end());
    std::printf("%-58s median %7.2f %s, worst %7.2f, aim below %g\n", what,
                values[values.size() / 2], unit, values.back(), aim);
}

/// Of this process, or of its children that have ended.
double processorSeconds(int who) {
    rusage usage = {};
    getrusage(who, &usage);
    const auto seconds = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
    };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

/// How much of a core is used meanwhile, in per cent.
double processorShare(int who, const std::function<void()>& meanwhile) {
    const double used = processorSeconds(who);
    const Clock::time_point begun = Clock::now();
    meanwhile();
    return (processorSeconds(who) - used) * 1e5 / milliseconds(Clock::now() - begun);
}

/// A recording opened and played as the window does it.
class Bench {
public:
    explicit Bench(std::filesystem::path recording)
        : recording_(std::move(recording)), reader_(Export(recording_).reader()),
          server_(reader_->header().SampleRate) {}

    void run() {
        play();
        seek();
        clock();
        processor();
        frozenServer();
    }

private:
    void open() {
        player_.reset();
        let(200ms);
        player_ = std::make_unique<WavePlayer>(recording_);
        player_->setReader(reader_);
        player_->setAngle(90);
    }
    void let(std::chrono::milliseconds pass) {
        loop_.runUntil([] { return false; }, pass);
    }
    double firstFrames(const std::function<void()>& cause) {
        first_.begin();
        cause();
        loop_.runUntil([this] { return first_.areTaken(); }, 10s);
        return first_.waited();
    }

    void play() {
        std::vector<double> opened;
        std::vector<double> atOnce;
        for (int i = 0; i < 20; ++i) {
            open();
            let(200ms);
            opened.push_back(firstFrames([this] { player_->play(); }));
            player_.reset();
            let(200ms);
            atOnce.push_back(firstFrames([this] {
                player_ = std::make_unique<WavePlayer>(recording_);
                player_->play();
            }));
        }
        report("play to first frames taken by the server", opened, "ms", 20);
        report("the same, with a recording opened just before", atOnce, "ms", 20);
    }

    void seek() {
        open();
        player_->play();
        let(300ms);
        std::vector<double> waits;
        for (int i = 0; i < 30; ++i) {
            waits.push_back(firstFrames([&] { player_->setPosition((i * 7 % 30) / 100.0); }));
            let(150ms);
        }
        report("seek while playing to first new frames", waits, "ms", 30);
    }

    void clock() {
        open();
        player_->play();
        loop_.runUntil([this] { return player_->curremtTime() >= 0.1; }, 10s);
        std::vector<double> offsets;
        double last = 0;
        bool isSane = true;
        const std::unique_ptr<Timer> timer = loop_.makeTimer();
        timer->startRepeating(7ms, [&] {
            const double now = player_->curremtTime();
            offsets.push_back(now * 1000 - milliseconds(Clock::now().time_since_epoch()));
            const double taken = static_cast<double>(aqData().queue->framesHandedOver());
            isSane = isSane && now >= last && now * aqData().format.sampleRate <= taken;
            last = now;
        });
        let(5s);
        timer->stop();
        std::vector<double> sorted = offsets;
        std::sort(sorted.begin(), sorted.end());
        const double usual = sorted[sorted.size() / 2];
        std::transform(offsets.begin(), offsets.end(), offsets.begin(),
                       [usual](double offset) { return std::abs(offset - usual); });
        report("currentTime beside the monotonic clock, after 100 ms", offsets, "ms", 2);
        std::printf("%-58s %s\n", "  never backwards, never beyond the frames handed over",
                    isSane ? "yes" : "NO");
    }

    void processor() {
        player_.reset();
        let(500ms);
        // The waiting here asks hundreds of times a second whether it is over.
        const double waiting = processorShare(RUSAGE_SELF, [this] { let(3s); });
        open();
        player_->play();
        let(500ms);
        const double share = processorShare(RUSAGE_SELF, [this] { let(6s); }) - waiting;
        report("processor while playing", {share}, "% of a core", 2);

        player_.reset();
        const double peer = processorShare(RUSAGE_CHILDREN, [this] {
            test::ChildProcess({"paplay", recording_.string()}).hasSucceeded();
        });
        std::printf("%-58s        %7.2f\n", "  that share to paplay's, which decodes nothing",
                    share / peer);
    }

    void frozenServer() {
        open();
        player_->play();
        let(300ms);
        std::vector<double> stalls;
        server_.freeze();
        Clock::time_point last = Clock::now();
        const std::unique_ptr<Timer> timer = loop_.makeTimer();
        timer->startRepeating(5ms, [&] {
            const Clock::time_point now = Clock::now();
            stalls.push_back(milliseconds(now - last));
            last = now;
        });
        for (int i = 0; i < 10; ++i) {
            player_->setVolume(0.5);
            player_->setPosition(i / 20.0);
            player_->pause();
            let(50ms);
            player_->play();
            let(50ms);
        }
        timer->stop();
        server_.thaw();
        report("between two turns of the main loop, server frozen", stalls, "ms", 100);
    }

    const std::filesystem::path recording_;
    const std::shared_ptr<WaveFileReader> reader_;
    test::SoundServer server_;
    FirstFrames first_;
    QtRunLoop loop_;
    TaskThread thread_;
    SoundSystem sound_{std::make_unique<WatchedBackend>(first_),
                       [this](std::function<void()> task) { thread_.run(std::move(task)); }};
    std::unique_ptr<WavePlayer> player_;
};

} // namespace

int main(int count, char** arguments) {
    if (count != 2) {
        std::fputs("usage: playback_benchmark RECORDING\n", stderr);
        return 2;
    }
    try {
        const test::LogLines quiet;
        EB::initData();
        Bench(arguments[1]).run();
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "playback_benchmark: %s\n", error.what());
        return 1;
    }
}
