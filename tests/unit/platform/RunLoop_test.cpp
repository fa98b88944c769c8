#include "platform/RunLoop.h"

#include "support/ManualRunLoop.h"

#include <gtest/gtest.h>
#include <memory>

namespace deckmate {
namespace {

using test::ManualRunLoop;

TEST(RunLoop, TheOneThatExistsIsTheMainOne) {
    const ManualRunLoop loop;
    EXPECT_EQ(&RunLoop::main(), &loop);
}

TEST(RunLoop, AnotherMayComeAfterTheFirst) {
    auto loop = std::make_unique<ManualRunLoop>();
    loop = nullptr;
    loop = std::make_unique<ManualRunLoop>();
    EXPECT_EQ(&RunLoop::main(), loop.get());
}

TEST(RunLoopDeathTest, AskingForOneWhereThereIsNoneEndsTheProgram) {
    EXPECT_DEATH(RunLoop::main(), "RunLoop doesn't exist");
}

TEST(RunLoopDeathTest, TwoAtATimeEndTheProgram) {
    const ManualRunLoop loop;
    EXPECT_DEATH(ManualRunLoop(), "RunLoop exists already");
}

} // namespace
} // namespace deckmate
