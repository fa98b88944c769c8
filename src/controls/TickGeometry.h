// Where the labels of a tick strip stand, and which one a click means.
#pragma once

#include "controls/ViewGeometry.h"

#include <cstddef>
#include <optional>
#include <vector>

namespace deckmate {

/// Right-aligned, from top to bottom, the middles equally far apart: the first one 30 points below
/// the strip's upper edge, the last one 30 points above its lower edge. `labels` are the sizes of
/// the texts, all of one height.
std::vector<ViewRect> tickFrames(ViewSize strip, const std::vector<ViewSize>& labels);

/// The first label that a click at the point means: as far left as the strip goes, up to the
/// label's right edge, and 10 points below the label, but none above.
std::optional<std::size_t> tickAt(const std::vector<ViewRect>& frames, ViewPoint point);

} // namespace deckmate
