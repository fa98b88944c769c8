#include "services/EB.h"

#include "platform/Log.h"

#include <string>

namespace deckmate {

std::unique_ptr<EB> EB::gl_event;
std::atomic<NotificationCenter*> EB::gl_Notify = nullptr;

void EB::initData() {
    if (gl_event == nullptr) {
        gl_event.reset(new EB);
        gl_Notify = &NotificationCenter::defaultCenter();
    }
}

void EB::subscribe(const void* observer, NotificationCenter::Action action, std::string_view name) {
    if (NotificationCenter* const center = gl_Notify; center != nullptr) {
        center->addObserver(observer, std::move(action), name);
    }
}

void EB::FIRE(std::string_view name) {
    FIRE(name, {});
}

void EB::FIRE(std::string_view name, std::any data) {
    Log::write(std::string(">>>>>EVENT BUS ").append(name).append("<<<<<"));
    if (NotificationCenter* const center = gl_Notify; center != nullptr) {
        center->postNotificationName(name, std::move(data));
    }
}

} // namespace deckmate
