#include "controls/TickGeometry.h"

namespace deckmate {

namespace {

constexpr double endMargin = 30.0;
constexpr double hitMargin = 10.0;

} // namespace

std::vector<ViewRect> tickFrames(ViewSize strip, const std::vector<ViewSize>& labels) {
    std::vector<ViewRect> frames;
    frames.reserve(labels.size());
    // Of a single label no use is made: it would be no number.
    const double step = (strip.height - 2 * endMargin) / (static_cast<double>(labels.size()) - 1.0);
    double offset = endMargin;
    for (const ViewSize& label : labels) {
        if (frames.empty()) {
            offset -= label.height / 2;
        }
        frames.push_back({strip.width - label.width, strip.height - label.height - offset,
                          label.width, label.height});
        offset += step;
    }
    return frames;
}

std::optional<std::size_t> tickAt(const std::vector<ViewRect>& frames, ViewPoint point) {
    for (std::size_t i = 0; i < frames.size(); ++i) {
        const ViewRect& frame = frames[i];
        const ViewRect hit = {0.0, frame.y - hitMargin, frame.x + frame.width,
                              frame.height + hitMargin};
        if (hit.contains(point)) {
            return i;
        }
    }
    return std::nullopt;
}

} // namespace deckmate
