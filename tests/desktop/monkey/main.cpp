// desktop_monkey SEED MINUTES ACTIONS_PER_MINUTE: does so many random things a minute to the main
// window, on a screen and a sound server of its own. Fails as soon as something doesn't hold that
// always has to. The same seed does the same again; what it meets also depends on time.
#include "app/Look.h"
#include "desktop/monkey/Monkey.h"
#include "desktop/support/Display.h"
#include "platform/Log.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <string>
#include <thread>

#include <QApplication>

#include <pthread.h>
#include <unistd.h>

namespace {

using namespace deckmate;
using namespace deckmate::test;
using namespace std::chrono_literals;

struct Order {
    std::uint32_t seed = 0;
    unsigned minutes = 0;
    unsigned actionsPerMinute = 0;
};

std::optional<Order> parse(int count, char** arguments) {
    if (count != 4) {
        return std::nullopt;
    }
    Order order;
    order.seed = static_cast<std::uint32_t>(std::strtoul(arguments[1], nullptr, 10));
    order.minutes = static_cast<unsigned>(std::strtoul(arguments[2], nullptr, 10));
    order.actionsPerMinute = static_cast<unsigned>(std::strtoul(arguments[3], nullptr, 10));
    return order.minutes == 0 || order.actionsPerMinute == 0 ? std::nullopt : std::optional(order);
}

/// What a program that only works must not have more of afterwards.
struct Holdings {
    std::ptrdiff_t descriptors = 0;
    std::ptrdiff_t threads = 0;
};

std::ptrdiff_t entriesOf(const char* folder) {
    const std::filesystem::directory_iterator begin(folder);
    return std::distance(begin, std::filesystem::directory_iterator());
}

Holdings holdings() {
    return {entriesOf("/proc/self/fd"), entriesOf("/proc/self/task")};
}

double residentMegabytes() {
    std::ifstream statistics("/proc/self/statm");
    double total = 0;
    double resident = 0;
    statistics >> total >> resident;
    return resident * static_cast<double>(sysconf(_SC_PAGESIZE)) / 1e6;
}

void print(const char* when, const Holdings& now) {
    std::printf("%s: %td descriptors, %td threads, %.0f MB\n", when, now.descriptors, now.threads,
                residentMegabytes());
}

/// Some things go a while after their owner.
void requireNoMoreThan(const Holdings& before) {
    const auto latest = std::chrono::steady_clock::now() + 60s;
    Holdings now = holdings();
    while (now.descriptors > before.descriptors || now.threads > before.threads) {
        if (std::chrono::steady_clock::now() > latest) {
            print("at the end", now);
            throw Broken("more descriptors or threads than at the beginning");
        }
        std::this_thread::sleep_for(100ms);
        now = holdings();
    }
    print("at the end", now);
}

/// On the monkey's thread. Doesn't return where something failed: with dialogs open there is no
/// orderly way out.
void run(Monkey& monkey, World& world, const Order& order, pthread_t mainThread) {
    const auto fail = [&](const char* what) {
        std::fflush(stdout);
        std::fprintf(stderr, "desktop_monkey: seed %u, after %zu actions: %s\n", order.seed,
                     monkey.actions(), what);
        world.endServer();
    };
    try {
        monkey.begin();
        const Holdings before = holdings();
        print("at the beginning", before);
        monkey.play(order.minutes * 1min, order.actionsPerMinute);
        monkey.end();
        requireNoMoreThan(before);
        std::printf("seed %u, %zu actions, everything held\n", order.seed, monkey.actions());
    } catch (const Hang& hang) {
        fail(hang.what());
        pthread_kill(mainThread, SIGABRT); // so that a debugger, or a sanitizer, tells where
        std::this_thread::sleep_for(10s);
        std::_Exit(1);
    } catch (const std::exception& error) {
        fail(error.what());
        std::_Exit(1);
    }
}

} // namespace

int main(int count, char** arguments) {
    const std::optional<Order> order = parse(count, arguments);
    if (!order) {
        std::fputs("usage: desktop_monkey SEED MINUTES ACTIONS_PER_MINUTE\n", stderr);
        return 2;
    }
    std::setvbuf(stdout, nullptr, _IOLBF, 0);
    Log::setSink([](std::string_view) {});
    // Before any thread is there, since these change the environment: the later one also leads to
    // a bus that isn't there.
    World world;
    const deckmate::test::Display display;
    QApplication application(count, arguments);
    QApplication::setQuitOnLastWindowClosed(false);
    applyLook(application);
    MainThread mainThread;
    Stage stage(world.takes(), order->seed % 2 == 0);
    Monkey monkey(mainThread, stage, world, order->seed);
    std::thread thread([&, self = pthread_self()] {
        run(monkey, world, *order, self);
        mainThread.post([] { QCoreApplication::quit(); });
    });
    const int status = QApplication::exec();
    thread.join();
    return status;
}
