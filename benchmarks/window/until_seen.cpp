// until-seen PROGRAM [ARGUMENT...]: starts a program that opens one window on $DISPLAY, and prints
// in milliseconds when another client of the display sees anything in it, and when it sees all.
//
// All is what doesn't change any more for a second. The program is ended then.
#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <optional>
#include <stdexcept>
#include <thread>
#include <vector>

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>
#include <xcb/xcb.h>

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;
using Picture = std::vector<std::uint8_t>;

// Left in the window, through its lists and labels, from its top to its bottom: as much as tells
// that it is painted, and as little as keeps nobody waiting for the server.
constexpr std::int16_t stripLeft = 80;
constexpr std::uint16_t stripWidth = 48;
constexpr std::uint16_t stripHeight = 660;

constexpr auto askingInterval = 500us;
constexpr auto settlingTime = 1s;
constexpr auto patience = 60s;

template <class Reply>
std::unique_ptr<Reply, decltype(&std::free)> owned(Reply* reply) {
    return {reply, &std::free};
}

class Screen {
public:
    Screen() : connection_(xcb_connect(nullptr, nullptr), &xcb_disconnect) {
        if (xcb_connection_has_error(connection_.get()) != 0) {
            throw std::runtime_error("no display");
        }
        root_ = xcb_setup_roots_iterator(xcb_get_setup(connection_.get())).data->root;
        constexpr char name[] = "_NET_CLIENT_LIST";
        const auto request = xcb_intern_atom(connection_.get(), 0, sizeof name - 1, name);
        const auto reply = owned(xcb_intern_atom_reply(connection_.get(), request, nullptr));
        if (reply == nullptr) {
            throw std::runtime_error("the display doesn't answer");
        }
        clientList_ = reply->atom;
    }

    /// Those that the window manager manages.
    std::vector<xcb_window_t> windows() const {
        const auto request =
            xcb_get_property(connection_.get(), 0, root_, clientList_, XCB_ATOM_WINDOW, 0, 64);
        const auto reply = owned(xcb_get_property_reply(connection_.get(), request, nullptr));
        if (reply == nullptr) {
            return {};
        }
        const auto* const first =
            static_cast<const xcb_window_t*>(xcb_get_property_value(reply.get()));
        const auto bytes = static_cast<std::size_t>(xcb_get_property_value_length(reply.get()));
        return {first, first + bytes / sizeof(xcb_window_t)};
    }

    /// The strip of a window as it is to be seen; empty while it isn't on the screen.
    Picture strip(xcb_window_t window) const {
        const auto request =
            xcb_get_image(connection_.get(), XCB_IMAGE_FORMAT_Z_PIXMAP, window, stripLeft, 0,
                          stripWidth, stripHeight, ~std::uint32_t{0});
        xcb_generic_error_t* error = nullptr;
        const auto reply = owned(xcb_get_image_reply(connection_.get(), request, &error));
        const auto freed = owned(error);
        if (reply == nullptr) {
            return {};
        }
        const std::uint8_t* const first = xcb_get_image_data(reply.get());
        return {first, first + xcb_get_image_data_length(reply.get())};
    }

private:
    std::unique_ptr<xcb_connection_t, decltype(&xcb_disconnect)> connection_;
    xcb_window_t root_ = 0;
    xcb_atom_t clientList_ = 0;
};

/// A new window shows the black screen behind it until its first picture arrives.
bool isPainted(const Picture& picture) {
    return std::ranges::any_of(picture, [](std::uint8_t byte) { return byte != 0; });
}

class Program {
public:
    explicit Program(char** arguments) {
        const int error =
            posix_spawnp(&number_, arguments[0], nullptr, nullptr, arguments, environ);
        if (error != 0) {
            throw std::runtime_error(std::strerror(error));
        }
    }
    ~Program() {
        kill(number_, SIGKILL);
        waitpid(number_, nullptr, 0);
    }
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;
    Program(Program&&) = delete;
    Program& operator=(Program&&) = delete;

private:
    pid_t number_ = 0;
};

struct Seen {
    Clock::time_point first;
    Clock::time_point all;
};

Seen watch(const Screen& screen, Clock::time_point started) {
    std::optional<Seen> seen;
    Picture last;
    for (;;) {
        const std::vector<xcb_window_t> windows = screen.windows();
        Picture picture = windows.empty() ? Picture() : screen.strip(windows.front());
        const auto now = Clock::now();
        if (picture != last) {
            last = std::move(picture);
            if (seen) {
                seen->all = now;
            } else if (isPainted(last)) {
                seen = {now, now};
            }
        }
        if (seen && now - seen->all > settlingTime) {
            if (windows.size() != 1) {
                throw std::runtime_error("more than one window");
            }
            return *seen;
        }
        if (now - started > patience) {
            throw std::runtime_error("no window");
        }
        std::this_thread::sleep_for(askingInterval);
    }
}

double milliseconds(Clock::duration duration) {
    return std::chrono::duration<double, std::milli>(duration).count();
}

} // namespace

int main(int count, char** arguments) try {
    if (count < 2) {
        std::fputs("usage: until-seen PROGRAM [ARGUMENT...]\n", stderr);
        return 2;
    }
    const Screen screen;
    if (!screen.windows().empty()) {
        throw std::runtime_error("there is a window already");
    }
    const auto started = Clock::now();
    const Program program(arguments + 1);
    const Seen seen = watch(screen, started);
    std::printf("%.3f %.3f\n", milliseconds(seen.first - started),
                milliseconds(seen.all - started));
    return 0;
} catch (const std::exception& error) {
    std::fprintf(stderr, "until-seen: %s\n", error.what());
    return 1;
}
