#include "services/EB.h"

#include "support/LogLines.h"

#include <any>
#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <vector>

namespace deckmate {
namespace {

using test::LogLines;
using Lines = std::vector<std::string>;

/// Unsubscribes at its end, which the product's only subscriber never has to.
class Subscriber {
public:
    Subscriber() = default;
    ~Subscriber() { NotificationCenter::defaultCenter().removeObserver(this); }
    Subscriber(const Subscriber&) = delete;
    Subscriber& operator=(const Subscriber&) = delete;
    Subscriber(Subscriber&&) = delete;
    Subscriber& operator=(Subscriber&&) = delete;

    void notify(const Notification& notification) {
        names.push_back(notification.name);
        hadObject = notification.object.has_value();
        if (hadObject) {
            object = std::any_cast<std::string>(notification.object);
        }
        thread = std::this_thread::get_id();
    }
    void notifyToo(const Notification& notification) {
        names.push_back("too " + notification.name);
    }

    Lines names;
    bool hadObject = false;
    std::string object;
    std::thread::id thread;
};

/// Before each test the bus is as at the start of the program.
class EBTest : public testing::Test {
protected:
    EBTest() { reset(); }
    ~EBTest() override { reset(); }
    EBTest(const EBTest&) = delete;
    EBTest& operator=(const EBTest&) = delete;
    EBTest(EBTest&&) = delete;
    EBTest& operator=(EBTest&&) = delete;

    LogLines log_;
    Subscriber subscriber_;

private:
    static void reset() {
        EB::gl_event = nullptr;
        EB::gl_Notify = nullptr;
    }
};

TEST_F(EBTest, ThereIsNothingBeforeInitData) {
    EXPECT_EQ(EB::gl_event, nullptr);
    EXPECT_EQ(EB::gl_Notify, nullptr);
    EXPECT_EQ(EB::init(), nullptr);
}

TEST_F(EBTest, InitDataPostsThroughTheDefaultCenter) {
    EB::initData();
    EXPECT_NE(EB::gl_event, nullptr);
    EXPECT_EQ(EB::gl_Notify, &NotificationCenter::defaultCenter());
}

TEST_F(EBTest, ASecondInitDataChangesNothing) {
    EB::initData();
    const EB* const first = EB::gl_event.get();
    EB::SUBSCRIBE(&subscriber_, &Subscriber::notify, "EB_PLAY_FINISH");
    EB::initData();
    EXPECT_EQ(EB::gl_event.get(), first);
    EB::FIRE("EB_PLAY_FINISH");
    EXPECT_EQ(subscriber_.names, Lines{"EB_PLAY_FINISH"});
}

TEST_F(EBTest, InitGivesTheSharedOne) {
    EB::initData();
    EXPECT_EQ(EB::init(), EB::gl_event.get());
}

TEST_F(EBTest, FiringWithoutSubscribersOnlyWritesTheLine) {
    EB::initData();
    EB::FIRE("EB_PLAY_FINISH");
    EXPECT_EQ(log_.lines(), Lines{">>>>>EVENT BUS EB_PLAY_FINISH<<<<<"});
}

TEST_F(EBTest, FiringBeforeInitDataIsLoggedAndGoesNowhere) {
    NotificationCenter::defaultCenter().addObserver(
        &subscriber_, [this](const Notification& note) { subscriber_.notify(note); }, "EB_EARLY");
    EB::FIRE("EB_EARLY");
    EXPECT_EQ(subscriber_.names, Lines{});
    EXPECT_EQ(log_.lines(), Lines{">>>>>EVENT BUS EB_EARLY<<<<<"});
}

TEST_F(EBTest, SubscribingBeforeInitDataDoesNothing) {
    EB::SUBSCRIBE(&subscriber_, &Subscriber::notify, "EB_EARLY");
    EB::initData();
    EB::FIRE("EB_EARLY");
    EXPECT_EQ(subscriber_.names, Lines{});
}

TEST_F(EBTest, FiringWithoutDataHasNoPayload) {
    EB::initData();
    EB::SUBSCRIBE(&subscriber_, &Subscriber::notify, "EB_PLAY_FINISH");
    subscriber_.hadObject = true;
    EB::FIRE("EB_PLAY_FINISH");
    EXPECT_FALSE(subscriber_.hadObject);
}

TEST_F(EBTest, FiringWithDataIsLoggedTheSameAndDeliversIt) {
    EB::initData();
    EB::SUBSCRIBE(&subscriber_, &Subscriber::notify, "EB_RELOAD_FILE_LIST");
    EB::FIRE("EB_RELOAD_FILE_LIST", std::string("payload"));
    EXPECT_EQ(subscriber_.object, "payload");
    EXPECT_EQ(log_.lines(), Lines{">>>>>EVENT BUS EB_RELOAD_FILE_LIST<<<<<"});
}

TEST_F(EBTest, TwoSubscriptionsDeliverOnlyTheirOwnEvents) {
    EB::initData();
    EB::SUBSCRIBE(&subscriber_, &Subscriber::notify, "EB_PLAY_FINISH");
    EB::SUBSCRIBE(&subscriber_, &Subscriber::notifyToo, "EB_RELOAD_FILE_LIST");
    EB::FIRE("EB_RELOAD_FILE_LIST");
    EXPECT_EQ(subscriber_.names, Lines{"too EB_RELOAD_FILE_LIST"});
    EB::FIRE("EB_PLAY_FINISH");
    EXPECT_EQ(subscriber_.names, (Lines{"too EB_RELOAD_FILE_LIST", "EB_PLAY_FINISH"}));
}

TEST_F(EBTest, DeliversOnTheFiringThread) {
    EB::initData();
    EB::SUBSCRIBE(&subscriber_, &Subscriber::notify, "EB_PLAY_FINISH");
    std::thread::id firing;
    std::thread([&] {
        firing = std::this_thread::get_id();
        EB::FIRE("EB_PLAY_FINISH");
    }).join();
    EXPECT_EQ(subscriber_.thread, firing);
}

TEST_F(EBTest, DeliversInTheOrderOfSubscription) {
    EB::initData();
    EB::SUBSCRIBE(&subscriber_, &Subscriber::notifyToo, "A");
    EB::SUBSCRIBE(&subscriber_, &Subscriber::notify, "A");
    EB::FIRE("A");
    EXPECT_EQ(subscriber_.names, (Lines{"too A", "A"}));
}

TEST_F(EBTest, TheLineComesBeforeTheDelivery) {
    struct Witness : Subscriber {
        void look(const Notification&) { seen = log->lines().size(); }
        const LogLines* log = nullptr;
        std::size_t seen = 0;
    } witness;
    witness.log = &log_;
    EB::initData();
    EB::SUBSCRIBE(&witness, &Witness::look, "A");
    EB::FIRE("A");
    EXPECT_EQ(witness.seen, 1U);
}

TEST_F(EBTest, AnInheritedFunctionCanBeSubscribed) {
    struct Derived : Subscriber {
    } derived;
    EB::initData();
    EB::SUBSCRIBE(&derived, &Derived::notify, "A");
    EB::FIRE("A");
    EXPECT_EQ(derived.names, Lines{"A"});
}

} // namespace
} // namespace deckmate
