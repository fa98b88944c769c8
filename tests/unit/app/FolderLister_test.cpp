#include "app/FolderLister.h"

#include "app/FolderHelper.h"
#include "platform/qt/QtRunLoop.h"

#include <atomic>
#include <chrono>
#include <future>
#include <gmock/gmock.h>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace deckmate {
namespace {

using namespace std::chrono_literals;
namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;

/// Folders below "/slow" answer once they are let to.
class FolderListerTest : public testing::Test {
protected:
    struct Folders {
        std::promise<void> answer;
        std::shared_future<void> isAnswering = answer.get_future().share();
        std::atomic<int> asked = 0;
        std::atomic<int> answered = 0;
    };

    ~FolderListerTest() override {
        if (!hasAnswered_) {
            answer();
        }
        waitFor([this] { return folders->answered == folders->asked; });
    }

    void answer() {
        hasAnswered_ = true;
        folders->answer.set_value();
    }
    bool waitFor(const std::function<bool()>& holds) { return loop.runUntil(holds, 60s); }

    QtRunLoop loop;
    std::shared_ptr<Folders> folders = std::make_shared<Folders>();
    std::vector<std::string> shown;
    std::unique_ptr<FolderLister> lister = std::make_unique<FolderLister>(
        [folders = folders](const fs::path& folder) {
            ++folders->asked;
            if (folder == "/slow") {
                folders->isAnswering.wait();
            }
            auto listing = std::make_shared<FolderHelper>(folder, FileIcons{});
            ++folders->answered;
            return listing;
        },
        [this](const FolderLister::Listing& listing) {
            EXPECT_TRUE(loop.isMainThread());
            shown.push_back(listing->folderPath());
        });

private:
    bool hasAnswered_ = false;
};

TEST_F(FolderListerTest, AListingIsShownFromTheLoop) {
    lister->start("/quick");
    while (folders->answered == 0) {
        std::this_thread::yield();
    }
    EXPECT_THAT(shown, IsEmpty());
    EXPECT_TRUE(waitFor([&] { return !shown.empty(); }));
    EXPECT_THAT(shown, ElementsAre("/quick"));
}

TEST_F(FolderListerTest, OneListingFollowsAnother) {
    lister->start("/quick");
    ASSERT_TRUE(waitFor([&] { return shown.size() == 1; }));
    lister->start("/other");
    ASSERT_TRUE(waitFor([&] { return shown.size() == 2; }));
    EXPECT_THAT(shown, ElementsAre("/quick", "/other"));
}

TEST_F(FolderListerTest, WhileAFolderDoesNotAnswerTheLoopGoesOn) {
    lister->start("/slow");
    int turns = 0;
    const std::unique_ptr<Timer> timer = loop.makeTimer();
    timer->startRepeating(1ms, [&] { ++turns; });
    EXPECT_TRUE(waitFor([&] { return turns == 3; }));
    EXPECT_THAT(shown, IsEmpty());
    answer();
    EXPECT_TRUE(waitFor([&] { return !shown.empty(); }));
    EXPECT_THAT(shown, ElementsAre("/slow"));
}

TEST_F(FolderListerTest, WhileAFolderDoesNotAnswerItIsNotAskedAgain) {
    lister->start("/slow");
    lister->start("/slow");
    lister->start("/slow");
    answer();
    EXPECT_TRUE(waitFor([&] { return !shown.empty(); }));
    EXPECT_EQ(folders->asked, 1);
}

TEST_F(FolderListerTest, WhatIsForgottenIsNotShown) {
    lister->start("/slow");
    lister->forget();
    lister->start("/quick");
    EXPECT_TRUE(waitFor([&] { return !shown.empty(); }));
    answer();
    EXPECT_TRUE(waitFor([&] { return folders->answered == 2; }));
    lister->start("/last");
    EXPECT_TRUE(waitFor([&] { return shown.size() == 2; }));
    EXPECT_THAT(shown, ElementsAre("/quick", "/last"));
}

TEST_F(FolderListerTest, WhatIsForgottenAfterItsAnswerIsNotShown) {
    lister->start("/quick");
    while (folders->answered == 0) {
        std::this_thread::yield();
    }
    lister->forget();
    lister->start("/other");
    EXPECT_TRUE(waitFor([&] { return !shown.empty(); }));
    EXPECT_THAT(shown, ElementsAre("/other"));
}

TEST_F(FolderListerTest, ItsEndDoesNotWaitForAFolderThatDoesNotAnswer) {
    lister->start("/slow");
    lister = nullptr;
    EXPECT_EQ(folders->answered, 0);
    answer();
    EXPECT_TRUE(waitFor([&] { return folders->answered == 1; }));
    EXPECT_THAT(shown, IsEmpty());
}

} // namespace
} // namespace deckmate
