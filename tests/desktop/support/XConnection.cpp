#include "desktop/support/XConnection.h"

#include <chrono>
#include <stdexcept>
#include <thread>

#include <X11/XKBlib.h>
#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <X11/extensions/XTest.h>

namespace deckmate::test {

struct XConnection::Impl {
    ::Display* display = XOpenDisplay(nullptr);
    Atom pingType = None;

    KeySym symbolOf(const std::string& name) const {
        const KeySym symbol = XStringToKeysym(name.c_str());
        if (symbol == NoSymbol || XKeysymToKeycode(display, symbol) == 0) {
            throw std::runtime_error("no key " + name);
        }
        return symbol;
    }

    bool isAnnounced() const {
        const Atom property = XInternAtom(display, "_NET_SUPPORTING_WM_CHECK", False);
        Atom type = None;
        int format = 0;
        unsigned long count = 0;
        unsigned long left = 0;
        unsigned char* value = nullptr;
        XGetWindowProperty(display, DefaultRootWindow(display), property, 0, 1, False,
                           AnyPropertyType, &type, &format, &count, &left, &value);
        if (value != nullptr) {
            XFree(value);
        }
        return count == 1;
    }

    bool givesKeyboard() const {
        const Window window =
            XCreateSimpleWindow(display, DefaultRootWindow(display), 0, 0, 10, 10, 0, 0, 0);
        XMapWindow(display, window);
        Window focused = None;
        for (int asked = 0; asked < 20 && focused != window; ++asked) {
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
            int revertTo = 0;
            XGetInputFocus(display, &focused, &revertTo);
        }
        XDestroyWindow(display, window);
        XSync(display, False);
        return focused == window;
    }
};

XConnection::XConnection() : impl_(std::make_unique<Impl>()) {
    if (impl_->display == nullptr) {
        throw std::runtime_error("no X server");
    }
    impl_->pingType = XInternAtom(impl_->display, "DECKMATE_TEST_PING", False);
}

XConnection::~XConnection() {
    XCloseDisplay(impl_->display);
}

bool XConnection::isManaged() const {
    return impl_->isAnnounced() && impl_->givesKeyboard();
}

void XConnection::movePointer(int x, int y) const {
    XTestFakeMotionEvent(impl_->display, -1, x, y, CurrentTime);
    XSync(impl_->display, False);
}

void XConnection::movePointerIn(std::uint32_t window, int x, int y) const {
    int screenX = 0;
    int screenY = 0;
    Window child = None;
    XTranslateCoordinates(impl_->display, window, DefaultRootWindow(impl_->display), x, y, &screenX,
                          &screenY, &child);
    movePointer(screenX, screenY);
}

void XConnection::button(unsigned number, bool isDown) const {
    XTestFakeButtonEvent(impl_->display, number, isDown ? True : False, CurrentTime);
    XSync(impl_->display, False);
}

void XConnection::key(const std::string& symbol, bool isDown) const {
    XTestFakeKeyEvent(impl_->display, XKeysymToKeycode(impl_->display, impl_->symbolOf(symbol)),
                      isDown ? True : False, CurrentTime);
    XSync(impl_->display, False);
}

void XConnection::tellKey(std::uint32_t window, const std::string& symbol, bool isDown,
                          std::uint32_t time) const {
    XEvent event = {};
    event.xkey.type = isDown ? KeyPress : KeyRelease;
    event.xkey.window = window;
    event.xkey.root = DefaultRootWindow(impl_->display);
    event.xkey.time = time;
    event.xkey.keycode = XKeysymToKeycode(impl_->display, impl_->symbolOf(symbol));
    event.xkey.same_screen = True;
    XSendEvent(impl_->display, window, False, NoEventMask, &event);
    XSync(impl_->display, False);
}

bool XConnection::needsShift(const std::string& symbol) const {
    const KeySym wanted = impl_->symbolOf(symbol);
    const KeyCode code = XKeysymToKeycode(impl_->display, wanted);
    return XkbKeycodeToKeysym(impl_->display, code, 0, 0) != wanted &&
           XkbKeycodeToKeysym(impl_->display, code, 0, 1) == wanted;
}

void XConnection::ping(std::uint32_t window, std::uint32_t token) const {
    XEvent event = {};
    event.xclient.type = ClientMessage;
    event.xclient.window = window;
    event.xclient.message_type = impl_->pingType;
    event.xclient.format = 32;
    event.xclient.data.l[0] = static_cast<long>(token);
    XSendEvent(impl_->display, window, False, NoEventMask, &event);
    XSync(impl_->display, False);
}

std::uint32_t XConnection::pingType() const {
    return static_cast<std::uint32_t>(impl_->pingType);
}

} // namespace deckmate::test
