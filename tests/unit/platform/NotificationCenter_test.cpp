#include "platform/NotificationCenter.h"

#include <any>
#include <atomic>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace deckmate {
namespace {

using Calls = std::vector<std::string>;

class NotificationCenterTest : public testing::Test {
protected:
    /// An action that notes its label and the event.
    NotificationCenter::Action noting(const std::string& label) {
        return [this, label](const Notification& notification) {
            calls_.push_back(label + ":" + notification.name);
        };
    }

    NotificationCenter center_;
    Calls calls_;
    int one_ = 0; ///< stand-ins for observers: only their addresses count
    int other_ = 0;
};

TEST_F(NotificationCenterTest, ThereIsOneDefaultCenter) {
    EXPECT_EQ(&NotificationCenter::defaultCenter(), &NotificationCenter::defaultCenter());
}

TEST_F(NotificationCenterTest, DeliversInsideThePosting) {
    center_.addObserver(&one_, noting("one"), "A");
    center_.postNotificationName("A");
    EXPECT_EQ(calls_, Calls{"one:A"});
}

TEST_F(NotificationCenterTest, DeliversOnThePostingThread) {
    std::thread::id called;
    center_.addObserver(
        &one_, [&](const Notification&) { called = std::this_thread::get_id(); }, "A");
    std::thread::id posting;
    std::thread([&] {
        posting = std::this_thread::get_id();
        center_.postNotificationName("A");
    }).join();
    EXPECT_EQ(called, posting);
}

TEST_F(NotificationCenterTest, ANameThatNobodyObservesGoesNowhere) {
    center_.addObserver(&one_, noting("one"), "A");
    center_.postNotificationName("B");
    EXPECT_EQ(calls_, Calls{});
}

TEST_F(NotificationCenterTest, NamesAreComparedWhole) {
    center_.addObserver(&one_, noting("one"), "AB");
    center_.postNotificationName("A");
    center_.postNotificationName("ABC");
    center_.postNotificationName("ab");
    center_.postNotificationName("");
    EXPECT_EQ(calls_, Calls{});
}

TEST_F(NotificationCenterTest, AnEmptyNameIsAName) {
    center_.addObserver(&one_, noting("one"), "");
    center_.postNotificationName("");
    EXPECT_EQ(calls_, Calls{"one:"});
}

TEST_F(NotificationCenterTest, DeliversInTheOrderOfRegistration) {
    center_.addObserver(&other_, noting("first"), "A");
    center_.addObserver(&one_, noting("second"), "A");
    center_.addObserver(&other_, noting("third"), "A");
    center_.postNotificationName("A");
    EXPECT_EQ(calls_, (Calls{"first:A", "second:A", "third:A"}));
}

TEST_F(NotificationCenterTest, TheSameRegistrationTwiceIsCalledTwice) {
    center_.addObserver(&one_, noting("one"), "A");
    center_.addObserver(&one_, noting("one"), "A");
    center_.postNotificationName("A");
    EXPECT_EQ(calls_, (Calls{"one:A", "one:A"}));
}

TEST_F(NotificationCenterTest, WithoutAPayloadTheObjectIsEmpty) {
    bool hasObject = true;
    center_.addObserver(
        &one_, [&](const Notification& note) { hasObject = note.object.has_value(); }, "A");
    center_.postNotificationName("A");
    EXPECT_FALSE(hasObject);
}

TEST_F(NotificationCenterTest, ThePayloadArrives) {
    std::string object;
    center_.addObserver(
        &one_, [&](const Notification& note) { object = std::any_cast<std::string>(note.object); },
        "A");
    center_.postNotificationName("A", std::string("payload"));
    EXPECT_EQ(object, "payload");
}

TEST_F(NotificationCenterTest, RemovingEndsAllRegistrationsOfTheObserver) {
    center_.addObserver(&one_, noting("one"), "A");
    center_.addObserver(&other_, noting("other"), "A");
    center_.addObserver(&one_, noting("one"), "B");
    center_.removeObserver(&one_);
    center_.postNotificationName("A");
    center_.postNotificationName("B");
    EXPECT_EQ(calls_, Calls{"other:A"});
}

TEST_F(NotificationCenterTest, RemovingAStrangerDoesNothing) {
    center_.addObserver(&one_, noting("one"), "A");
    center_.removeObserver(&other_);
    center_.removeObserver(nullptr);
    center_.postNotificationName("A");
    EXPECT_EQ(calls_, Calls{"one:A"});
}

TEST_F(NotificationCenterTest, RemovedDuringADeliveryIsNotCalledByIt) {
    center_.addObserver(
        &one_, [this](const Notification&) { center_.removeObserver(&other_); }, "A");
    center_.addObserver(&other_, noting("other"), "A");
    center_.postNotificationName("A");
    EXPECT_EQ(calls_, Calls{});
}

TEST_F(NotificationCenterTest, AnObserverMayRemoveItselfInItsOwnCall) {
    const auto held = std::make_shared<std::string>("held by the action");
    center_.addObserver(
        &one_,
        [this, held](const Notification&) {
            center_.removeObserver(&one_);
            calls_.push_back(*held);
        },
        "A");
    center_.postNotificationName("A");
    center_.postNotificationName("A");
    EXPECT_EQ(calls_, Calls{"held by the action"});
}

TEST_F(NotificationCenterTest, AddedDuringADeliveryIsCalledFromTheNextOnward) {
    center_.addObserver(
        &one_,
        [this](const Notification&) {
            center_.removeObserver(&one_);
            center_.addObserver(&other_, noting("other"), "A");
        },
        "A");
    center_.postNotificationName("A");
    EXPECT_EQ(calls_, Calls{});
    center_.postNotificationName("A");
    EXPECT_EQ(calls_, Calls{"other:A"});
}

TEST_F(NotificationCenterTest, APostingInsideADeliveryIsDeliveredFirst) {
    center_.addObserver(
        &one_, [this](const Notification&) { center_.postNotificationName("B"); }, "A");
    center_.addObserver(&other_, noting("other"), "A");
    center_.addObserver(&other_, noting("other"), "B");
    center_.postNotificationName("A");
    EXPECT_EQ(calls_, (Calls{"other:B", "other:A"}));
}

TEST_F(NotificationCenterTest, WhatARemovedActionHeldMayComeBackWhenItGoes) {
    struct Poster {
        explicit Poster(NotificationCenter& poster) : center(poster) {}
        ~Poster() { center.postNotificationName("GONE"); }
        Poster(const Poster&) = delete;
        Poster& operator=(const Poster&) = delete;
        Poster(Poster&&) = delete;
        Poster& operator=(Poster&&) = delete;
        NotificationCenter& center;
    };
    center_.addObserver(&other_, noting("other"), "GONE");
    center_.addObserver(
        &one_, [held = std::make_shared<Poster>(center_)](const Notification&) {}, "A");
    center_.removeObserver(&one_);
    EXPECT_EQ(calls_, Calls{"other:GONE"});
}

TEST_F(NotificationCenterTest, ThreadsMayPostAddAndRemoveAtTheSameTime) {
    std::atomic<int> delivered = 0;
    center_.addObserver(
        &one_, [&](const Notification&) { ++delivered; }, "A");
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([this] {
            const int own = 0;
            for (int round = 0; round < 500; ++round) {
                center_.addObserver(
                    &own, [](const Notification&) {}, "A");
                center_.postNotificationName("A");
                center_.removeObserver(&own);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(delivered, 4 * 500);
}

} // namespace
} // namespace deckmate
