#include "platform/NotificationCenter.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace deckmate {

NotificationCenter& NotificationCenter::defaultCenter() {
    // Never destroyed: observers of static lifetime may still remove themselves.
    static auto* const center = new NotificationCenter;
    return *center;
}

void NotificationCenter::addObserver(const void* observer, Action action, std::string_view name) {
    auto registration = std::make_shared<Registration>();
    registration->observer = observer;
    registration->name = name;
    registration->action = std::move(action);
    const std::lock_guard guard(lock_);
    registrations_.push_back(std::move(registration));
}

void NotificationCenter::removeObserver(const void* observer) {
    // Outlives the lock: what an action holds may use this center when it goes.
    std::vector<std::shared_ptr<Registration>> removed;
    const std::lock_guard guard(lock_);
    const auto first = std::stable_partition(
        registrations_.begin(), registrations_.end(),
        [observer](const auto& registration) { return registration->observer != observer; });
    removed.assign(std::make_move_iterator(first), std::make_move_iterator(registrations_.end()));
    registrations_.erase(first, registrations_.end());
    for (const auto& registration : removed) {
        registration->isRemoved = true;
    }
}

void NotificationCenter::postNotificationName(std::string_view name, std::any object) {
    std::vector<std::shared_ptr<Registration>> called;
    {
        const std::lock_guard guard(lock_);
        std::copy_if(registrations_.begin(), registrations_.end(), std::back_inserter(called),
                     [name](const auto& registration) { return registration->name == name; });
    }
    const Notification notification{std::string(name), std::move(object)};
    for (const auto& registration : called) {
        if (!registration->isRemoved) {
            registration->action(notification);
        }
    }
}

} // namespace deckmate
