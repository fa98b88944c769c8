#include "h8-simulator/Commands.h"

#include "support/ManualRunLoop.h"

#include <array>
#include <chrono>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <vector>

namespace deckmate::tools {
namespace {

using namespace std::chrono_literals;
using test::ManualRunLoop;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

const Bytes startDone = {0xF0, 0x52, 0x00, 0x00, 0x00, 0x15, 0xF7};

class CommandsTest : public testing::Test {
protected:
    void run(const std::string& line) {
        const ParsedCommand command = parseCommand(line);
        ASSERT_TRUE(command.run) << line << ": " << command.error;
        command.run(simulator);
    }

    ManualRunLoop loop;
    std::vector<Bytes> sent;
    std::vector<std::string> lines;
    std::vector<std::string> reasons;
    Simulator simulator{loop,
                        {.send =
                             [this](ByteView bytes) {
                                 sent.emplace_back(bytes.begin(), bytes.end());
                                 return true;
                             },
                         .print = [this](const std::string& line) { lines.push_back(line); },
                         .time = [this] { return loop.now(); },
                         .leave = [this](const std::string& why) { reasons.push_back(why); }}};
};

TEST_F(CommandsTest, Card) {
    run("card out");
    EXPECT_EQ(simulator.state().card, 0);
    run("card in");
    EXPECT_EQ(simulator.state().card, 1);
    run("card 2");
    EXPECT_EQ(simulator.state().card, 2);
}

TEST_F(CommandsTest, Sizes) {
    run("used 8 MB");
    run("max 119GB");
    EXPECT_EQ(simulator.state().used, 8'388'608U);
    EXPECT_EQ(simulator.state().capacity, 127'775'277'056U);
}

TEST_F(CommandsTest, Remaining) {
    run("remaining 127:09:59");
    EXPECT_EQ(simulator.state().remaining, (std::array<std::uint8_t, 3>{127, 9, 59}));
}

TEST_F(CommandsTest, VersionAsCharactersOrAsHex) {
    run("version A1.9");
    EXPECT_EQ(simulator.state().version, (std::array<std::uint8_t, 4>{'A', '1', '.', '9'}));
    run("version 30003100");
    EXPECT_EQ(simulator.state().version, (std::array<std::uint8_t, 4>{0x30, 0, 0x31, 0}));
}

TEST_F(CommandsTest, VersionOfFourDigitsIsNotHex) {
    run("version 0123");
    EXPECT_EQ(simulator.state().version, (std::array<std::uint8_t, 4>{'0', '1', '2', '3'}));
}

TEST_F(CommandsTest, Identity) {
    run("id 52 6e00 01");
    EXPECT_EQ(simulator.state().deviceId, (std::array<std::uint8_t, 4>{0x52, 0x6E, 0x00, 0x01}));
}

TEST_F(CommandsTest, BatteryAndPowerOff) {
    run("battery 2");
    run("power-off 255");
    EXPECT_EQ(simulator.state().battery, 2);
    EXPECT_EQ(simulator.state().powerOff, 255);
}

TEST_F(CommandsTest, ReportNow) {
    run("report");
    EXPECT_THAT(sent, SizeIs(1));
}

TEST_F(CommandsTest, ReportEverySomeSecondsUntilOff) {
    run("report every 0.5");
    loop.advance(1s);
    EXPECT_THAT(sent, SizeIs(2));
    run("report off");
    loop.advance(1s);
    EXPECT_THAT(sent, SizeIs(2));
}

TEST_F(CommandsTest, Silent) {
    run("silent 2");
    EXPECT_EQ(simulator.faults().description(), "silent 2");
    run("silent all");
    EXPECT_EQ(simulator.faults().description(), "silent all, silent 2");
    run("silent off");
    EXPECT_EQ(simulator.faults().description(), "none");
}

TEST_F(CommandsTest, Length) {
    run("length 1 -2");
    run("length 2 +3");
    run("length 3 4");
    EXPECT_EQ(simulator.faults().description(), "length 1 -2, length 2 3, length 3 4");
}

TEST_F(CommandsTest, SplitUntilZero) {
    run("split 3");
    EXPECT_EQ(simulator.faults().description(), "split 3");
    run("split 0");
    EXPECT_EQ(simulator.faults().description(), "none");
}

TEST_F(CommandsTest, TwiceUntilOff) {
    run("twice");
    EXPECT_EQ(simulator.faults().description(), "twice");
    run("twice off");
    EXPECT_EQ(simulator.faults().description(), "none");
}

TEST_F(CommandsTest, Delay) {
    run("delay 1900");
    EXPECT_EQ(simulator.faults().delay(), 1900ms);
}

TEST_F(CommandsTest, MergeHoldsAReplyUntilOff) {
    run("merge");
    run("in F0 52 00 00 52 F7");
    EXPECT_THAT(sent, IsEmpty());
    run("merge off");
    EXPECT_THAT(sent, ElementsAre(startDone));
}

TEST_F(CommandsTest, FaultsOffEndsAllAndSendsWhatWaits) {
    run("merge");
    run("split 1000");
    run("in F0 52 00 00 52 F7");
    run("faults off");
    EXPECT_EQ(simulator.faults().description(), "none");
    EXPECT_THAT(sent, ElementsAre(startDone));
}

TEST_F(CommandsTest, SendTakesHexInAnyShape) {
    run("send F0 7e0006 02F7");
    EXPECT_THAT(sent, ElementsAre(Bytes{0xF0, 0x7E, 0x00, 0x06, 0x02, 0xF7}));
}

TEST_F(CommandsTest, Garbage) {
    run("seed 5");
    run("garbage 3");
    std::mt19937 engine(5);
    Bytes expected;
    for (int i = 0; i < 3; ++i) {
        expected.push_back(static_cast<std::uint8_t>(engine() & 0xFF));
    }
    EXPECT_THAT(sent, ElementsAre(expected));
}

TEST_F(CommandsTest, InIsTakenAsIfTheComputerHadSentIt) {
    run("in F0 52 00");
    run("in 00 52 F7");
    EXPECT_THAT(sent, ElementsAre(startDone));
}

TEST_F(CommandsTest, HelpPrintsALineForEachCommand) {
    run("help");
    const std::string help = commandHelp();
    EXPECT_EQ(lines.size(), static_cast<std::size_t>(std::ranges::count(help, '\n')));
    EXPECT_THAT(lines.back(), HasSubstr("quit"));
}

TEST_F(CommandsTest, Quit) {
    run("quit");
    EXPECT_THAT(reasons, ElementsAre("quit"));
}

TEST_F(CommandsTest, SpacesTabsAndCarriageReturnsSeparate) {
    run("  battery\t 3 \r");
    EXPECT_EQ(simulator.state().battery, 3);
}

TEST_F(CommandsTest, EmptyLinesAndCommentsDoNothing) {
    run("");
    run(" \t");
    run("# card out");
    EXPECT_EQ(simulator.state().card, 1);
    EXPECT_THAT(lines, IsEmpty());
}

TEST(Commands, UnknownOnesAreNamed) {
    EXPECT_EQ(parseCommand("reboot now").error, "unknown command, help lists them: reboot");
}

TEST(Commands, CaseMatters) {
    EXPECT_FALSE(parseCommand("QUIT").run);
}

TEST(Commands, ErrorsHoldNothingThatATerminalWouldObey) {
    EXPECT_EQ(parseCommand("\x1B[2J\x07").error, "unknown command, help lists them: ?[2J?");
}

TEST(Commands, ErrorsAreShort) {
    EXPECT_LT(parseCommand(std::string(100'000, 'x')).error.size(), 200U);
    EXPECT_LT(parseCommand("battery " + std::string(100'000, 'x')).error.size(), 200U);
}

TEST(Commands, NumbersOutOfRangeAreNamedWithIt) {
    EXPECT_EQ(parseCommand("battery 256").error, "battery: \"256\" is not a number from 0 to 255");
}

TEST(Commands, WrongArgumentsAreAnsweredWithTheUsage) {
    EXPECT_EQ(parseCommand("split 1 2").error, "usage: split N");
}

TEST(Commands, RefusesWrongArguments) {
    for (const char* line : {"card",
                             "card on",
                             "card -1",
                             "card in out",
                             "used",
                             "used x",
                             "used -1 GB",
                             "used 512TB",
                             "max",
                             "remaining",
                             "remaining 1:2",
                             "remaining 1:2:3:4",
                             "remaining 1::3",
                             "remaining 128:0:0",
                             "remaining 0:60:0",
                             "remaining 0:0:60",
                             "remaining -1:0:0",
                             "version",
                             "version 012",
                             "version 01234",
                             "version 0 1 0 0",
                             "id",
                             "id 52",
                             "id 5200000000",
                             "id zz000000",
                             "battery",
                             "battery -1",
                             "battery 1.5",
                             "power-off 256",
                             "report now",
                             "report every",
                             "report every 0",
                             "report every -1",
                             "report every nan",
                             "report every 1e9",
                             "silent",
                             "silent 0",
                             "silent -1",
                             "silent 1000001",
                             "length 1",
                             "length 0 1",
                             "length 1 x",
                             "length 1 --1",
                             "length 1 -",
                             "length 1 1000001",
                             "split",
                             "split -1",
                             "merge 1",
                             "twice on off",
                             "delay",
                             "delay -1",
                             "delay 3600001",
                             "faults",
                             "faults on",
                             "send",
                             "send F",
                             "send F0 7",
                             "send xx",
                             "send 0x10",
                             "garbage",
                             "garbage 0",
                             "garbage 1000001",
                             "seed",
                             "seed -1",
                             "seed 4294967296",
                             "in",
                             "in +1",
                             "status now",
                             "help me",
                             "quit now"}) {
        const ParsedCommand command = parseCommand(line);
        EXPECT_FALSE(command.run) << line;
        EXPECT_NE(command.error, "") << line;
    }
}

TEST(Commands, RandomLinesDoNoHarm) {
    std::mt19937 random(1); // NOLINT(cert-msc51-cpp)
    for (const char* start : {"", "card ", "used ", "remaining ", "version ", "send ", "length "}) {
        for (int i = 0; i < 2000; ++i) {
            std::string line = start;
            for (std::size_t size = random() % 20; size > 0; --size) {
                line += static_cast<char>(random() & 0xFF);
            }
            const ParsedCommand command = parseCommand(line);
            EXPECT_NE(command.run == nullptr, command.error.empty());
        }
    }
}

} // namespace
} // namespace deckmate::tools
