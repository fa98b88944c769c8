// The event bus: named events, fired from anywhere, for objects that subscribed to them.
#pragma once

#include "platform/NotificationCenter.h"

#include <any>
#include <atomic>
#include <functional>
#include <memory>
#include <string_view>
#include <utility>

namespace deckmate {

/// Delivers an event by calling its subscribers inside the firing call, on its thread, in the order
/// of their subscriptions. There is no way to unsubscribe: a subscriber lasts as long as the
/// program.
///
///     EB::initData();
///     EB::SUBSCRIBE(this, &Window::notify, "EB_PLAY_FINISH");
///     EB::FIRE("EB_PLAY_FINISH");
class EB {
public:
    /// The one there is; null until initData(). Thread: main.
    static std::unique_ptr<EB> gl_event;
    /// What events are posted through, null until initData().
    static std::atomic<NotificationCenter*> gl_Notify;

    /// To be called before any subscription or firing; calls after the first do nothing.
    /// Thread: main.
    static void initData();
    /// The one there is. Thread: main.
    static EB* init() { return gl_event.get(); }

    /// `fun` is called with each event of this name. Before initData() nothing happens. Thread:
    /// any.
    template <class Observer, class Base>
    static void SUBSCRIBE(Observer* observer, void (Base::*fun)(const Notification&),
                          std::string_view name) {
        subscribe(
            observer,
            [observer, fun](const Notification& notification) { (observer->*fun)(notification); },
            name);
    }
    /// Logs the event and delivers it without a payload; before initData() to nobody. Thread: any.
    static void FIRE(std::string_view name);
    /// Likewise, with a payload.
    static void FIRE(std::string_view name, std::any data);

private:
    EB() = default;

    static void subscribe(const void* observer, NotificationCenter::Action action,
                          std::string_view name);
};

} // namespace deckmate
