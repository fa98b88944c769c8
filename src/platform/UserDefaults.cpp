#include "platform/UserDefaults.h"

#include "platform/Installed.h"

namespace deckmate {

namespace {

constinit Installed<UserDefaults> installed("UserDefaults");

} // namespace

UserDefaults::UserDefaults() {
    installed.install(*this);
}

UserDefaults::~UserDefaults() {
    installed.remove();
}

UserDefaults& UserDefaults::standard() {
    return installed.get();
}

} // namespace deckmate
