#include "services/MIDICommon.h"

#include "platform/RunLoop.h"

#include <utility>

namespace deckmate {

void MIDICommon::runBackground(std::function<void()> block) {
    RunLoop::main().runInBackground(std::move(block));
}

void MIDICommon::runOnUIThread(std::function<void()> block) {
    RunLoop::main().runAndWait(std::move(block));
}

} // namespace deckmate
