#include "platform/RunLoop.h"

#include "platform/Installed.h"

namespace deckmate {

namespace {

constinit Installed<RunLoop> installed("RunLoop");

} // namespace

RunLoop::RunLoop() {
    installed.install(*this);
}

RunLoop::~RunLoop() {
    installed.remove();
}

RunLoop& RunLoop::main() {
    return installed.get();
}

} // namespace deckmate
