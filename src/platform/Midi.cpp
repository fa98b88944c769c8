#include "platform/Midi.h"

#include "platform/Installed.h"

namespace deckmate {

namespace {

constinit Installed<Midi> installed("Midi");

} // namespace

Midi::Midi() {
    installed.install(*this);
}

Midi::~Midi() {
    installed.remove();
}

Midi& Midi::current() {
    return installed.get();
}

} // namespace deckmate
