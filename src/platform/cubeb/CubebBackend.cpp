#include "platform/cubeb/CubebBackend.h"

#include <algorithm>
#include <atomic>
#include <string_view>
#include <utility>

#include <cubeb/cubeb.h>

namespace deckmate {

namespace {

constexpr const char* applicationName = "ORLO H8 Deckmate";
constexpr std::uint32_t lowestLatency = 1;
constexpr std::uint32_t highestLatency = 96000; // cubeb's own limit

struct DestroyContext {
    void operator()(cubeb* context) const { cubeb_destroy(context); }
};
/// Streams keep the context that they were made with.
using Context = std::shared_ptr<cubeb>;

Context connect() {
    cubeb* context = nullptr;
    if (cubeb_init(&context, applicationName, nullptr) != CUBEB_OK) {
        return nullptr;
    }
    return {context, DestroyContext()};
}

class CubebStream final : public OutputStream {
public:
    /// To be opened before anything else.
    explicit CubebStream(Context context, OutputSource& source)
        : context_(std::move(context)), source_(source),
          isOnPulseAudio_(std::string_view(cubeb_get_backend_id(context_.get())) == "pulse") {}

    ~CubebStream() override {
        if (stream_ != nullptr) {
            cubeb_stream_stop(stream_);
            cubeb_stream_destroy(stream_);
        }
    }
    CubebStream(const CubebStream&) = delete;
    CubebStream& operator=(const CubebStream&) = delete;
    CubebStream(CubebStream&&) = delete;
    CubebStream& operator=(CubebStream&&) = delete;

    bool open(const OutputFormat& format) {
        cubeb_stream_params parameters = {};
        parameters.format = CUBEB_SAMPLE_FLOAT32NE;
        parameters.rate = format.sampleRate;
        parameters.channels = format.channels;
        parameters.layout = CUBEB_LAYOUT_UNDEFINED;
        parameters.prefs = CUBEB_STREAM_PREF_NONE;
        const std::uint32_t latency =
            std::clamp(format.sampleRate / 10, lowestLatency, highestLatency);
        return cubeb_stream_init(context_.get(), &stream_, applicationName, nullptr, nullptr,
                                 nullptr, &parameters, latency, takeFrames, takeState,
                                 this) == CUBEB_OK;
    }

    bool start() override { return !hasFailed_ && cubeb_stream_start(stream_) == CUBEB_OK; }
    bool stop() override { return cubeb_stream_stop(stream_) == CUBEB_OK; }

    std::optional<std::uint64_t> position() override {
        std::uint64_t frames = 0;
        if (cubeb_stream_get_position(stream_, &frames) != CUBEB_OK) {
            return std::nullopt;
        }
        return frames;
    }

private:
    static long takeFrames(cubeb_stream* /*stream*/, void* self, const void* /*input*/,
                           void* output, long frames) {
        return static_cast<long>(static_cast<CubebStream*>(self)->source_.fill(
            static_cast<float*>(output), static_cast<std::size_t>(frames)));
    }

    static void takeState(cubeb_stream* stream, void* self, cubeb_state state) {
        auto& that = *static_cast<CubebStream*>(self);
        if (state == CUBEB_STATE_DRAINED) {
            that.source_.drained();
        } else if (state == CUBEB_STATE_ERROR) {
            that.hasFailed_ = true;
            that.source_.failed();
        } else if (state == CUBEB_STATE_STARTED && that.hasFailed_ && that.isOnPulseAudio_) {
            // The server has gone while it was being told, in start(), which is where this call
            // comes from. The library is about to ask the dead stream how much room it has, and
            // aborts on the answer, unless the stream is stopped.
            cubeb_stream_stop(stream);
        }
    }

    const Context context_;
    OutputSource& source_;
    const bool isOnPulseAudio_;
    std::atomic<bool> hasFailed_ = false;
    cubeb_stream* stream_ = nullptr;
};

class CubebBackend final : public OutputBackend {
public:
    std::unique_ptr<OutputStream> open(const OutputFormat& format, OutputSource& source) override {
        const bool wasConnected = context_ != nullptr;
        if (std::unique_ptr<OutputStream> stream = tryOpen(format, source)) {
            return stream;
        }
        // The server may have come or come back since then.
        context_.reset();
        return wasConnected ? tryOpen(format, source) : nullptr;
    }

private:
    std::unique_ptr<OutputStream> tryOpen(const OutputFormat& format, OutputSource& source) {
        if (!context_) {
            context_ = connect();
        }
        if (!context_) {
            return nullptr;
        }
        auto stream = std::make_unique<CubebStream>(context_, source);
        return stream->open(format) ? std::move(stream) : nullptr;
    }

    Context context_;
};

} // namespace

std::unique_ptr<OutputBackend> makeCubebBackend() {
    return std::make_unique<CubebBackend>();
}

} // namespace deckmate
