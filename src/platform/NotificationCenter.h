// Tells objects that registered for a name when something of that name happens.
#pragma once

#include <any>
#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace deckmate {

/// What an observer gets.
struct Notification {
    std::string name;
    std::any object; ///< the payload; empty for none
};

/// A registry of observers by name. Delivery happens inside the posting call, on its thread, in the
/// order of registration. Observers may post, add and remove while they are called.
///
///     NotificationCenter& center = NotificationCenter::defaultCenter();
///     center.addObserver(this, [this](const Notification& note) { reload(note); }, "RELOAD");
///     center.postNotificationName("RELOAD");
///     center.removeObserver(this);
///
/// Thread: any.
class NotificationCenter {
public:
    /// Must not throw.
    using Action = std::function<void(const Notification&)>;

    /// The one of this program; lasts until its end.
    static NotificationCenter& defaultCenter();

    /// The observer is only an address to remove it by, and may register several times, even for
    /// one name: each registration is called. A posting under way doesn't reach it.
    void addObserver(const void* observer, Action action, std::string_view name);
    /// Ends all registrations of the observer, for its destructor. None of them is called any more,
    /// except that a call which another thread has begun goes on: an observer that is posted to
    /// from several threads has to see to it that no posting is under way when it goes.
    void removeObserver(const void* observer);
    /// Calls everyone who registered for exactly this name; for nobody, nothing happens.
    void postNotificationName(std::string_view name, std::any object = {});

private:
    struct Registration {
        const void* observer = nullptr;
        std::string name;
        Action action;
        std::atomic<bool> isRemoved = false;
    };

    std::mutex lock_;
    std::vector<std::shared_ptr<Registration>> registrations_; ///< in their order
};

} // namespace deckmate
