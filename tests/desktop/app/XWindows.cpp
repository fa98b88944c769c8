#include "desktop/app/XWindows.h"

#include <algorithm>
#include <stdexcept>
#include <vector>

#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <X11/Xutil.h>

namespace deckmate::test {

namespace {

/// The window may be gone by the time it is asked: that is an answer, no reason to end.
int ignoreError(::Display* /*display*/, XErrorEvent* /*error*/) {
    return 0;
}

} // namespace

struct XWindows::Impl {
    ::Display* display = XOpenDisplay(nullptr);

    Atom atom(const std::string& name) const { return XInternAtom(display, name.c_str(), False); }

    /// Its bytes, in the layout of Xlib: items of 32 bits as longs.
    std::vector<unsigned char> property(::Window window, const std::string& name) const {
        Atom type = None;
        int format = 0;
        unsigned long count = 0;
        unsigned long left = 0;
        unsigned char* value = nullptr;
        constexpr long longest = 4096;
        if (XGetWindowProperty(display, window, atom(name), 0, longest, False, AnyPropertyType,
                               &type, &format, &count, &left, &value) != Success ||
            value == nullptr) {
            return {};
        }
        const std::size_t size = count * (format == 32 ? sizeof(long) : 1);
        std::vector<unsigned char> bytes(value, value + size);
        XFree(value);
        return bytes;
    }

    std::vector<unsigned long> numbers(::Window window, const std::string& name) const {
        const auto bytes = property(window, name);
        const auto* const first = reinterpret_cast<const unsigned long*>(bytes.data());
        return {first, first + bytes.size() / sizeof(unsigned long)};
    }
};

XWindows::XWindows() : impl_(std::make_unique<Impl>()) {
    if (impl_->display == nullptr) {
        throw std::runtime_error("no X server");
    }
    XSetErrorHandler(ignoreError);
}

XWindows::~XWindows() {
    XCloseDisplay(impl_->display);
}

std::optional<XWindows::Window> XWindows::titled(const std::string& title) const {
    const auto windows = impl_->numbers(DefaultRootWindow(impl_->display), "_NET_CLIENT_LIST");
    for (const unsigned long window : windows) {
        const auto name = impl_->property(window, "_NET_WM_NAME");
        if (std::string(name.begin(), name.end()) == title) {
            return static_cast<Window>(window);
        }
    }
    return std::nullopt;
}

QRect XWindows::place(Window window) const {
    XWindowAttributes attributes = {};
    XGetWindowAttributes(impl_->display, window, &attributes);
    int x = 0;
    int y = 0;
    ::Window child = None;
    XTranslateCoordinates(impl_->display, window, DefaultRootWindow(impl_->display), 0, 0, &x, &y,
                          &child);
    return {x, y, attributes.width, attributes.height};
}

bool XWindows::allows(Window window, const std::string& action) const {
    const auto actions = impl_->numbers(window, "_NET_WM_ALLOWED_ACTIONS");
    return std::find(actions.begin(), actions.end(), impl_->atom(action)) != actions.end();
}

std::uint32_t XWindows::pixel(Window window, const QPoint& place) const {
    XImage* const image =
        XGetImage(impl_->display, window, place.x(), place.y(), 1, 1, AllPlanes, ZPixmap);
    if (image == nullptr) {
        throw std::runtime_error("no such pixel");
    }
    const auto pixel = static_cast<std::uint32_t>(XGetPixel(image, 0, 0));
    XDestroyImage(image);
    return pixel & 0xFFFFFF;
}

XWindows::Window XWindows::frame(Window window) const {
    ::Window outermost = window;
    ::Window parent = window;
    ::Window root = None;
    while (parent != root) {
        outermost = parent;
        ::Window* children = nullptr;
        unsigned count = 0;
        if (XQueryTree(impl_->display, outermost, &root, &parent, &children, &count) == 0) {
            throw std::runtime_error("no such window");
        }
        XFree(children);
    }
    return static_cast<Window>(outermost);
}

bool XWindows::isFrameShown(Window frame) const {
    XWindowAttributes attributes = {};
    return XGetWindowAttributes(impl_->display, frame, &attributes) != 0 &&
           attributes.map_state == IsViewable;
}

void XWindows::close(Window window) const {
    XEvent event = {};
    event.xclient.type = ClientMessage;
    event.xclient.window = window;
    event.xclient.message_type = impl_->atom("_NET_CLOSE_WINDOW");
    event.xclient.format = 32;
    constexpr long fromUser = 2;
    event.xclient.data.l[1] = fromUser;
    XSendEvent(impl_->display, DefaultRootWindow(impl_->display), False,
               SubstructureNotifyMask | SubstructureRedirectMask, &event);
    XSync(impl_->display, False);
}

} // namespace deckmate::test
