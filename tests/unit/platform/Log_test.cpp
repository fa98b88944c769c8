#include "platform/Log.h"

#include "support/LogLines.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <gtest/gtest.h>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include <sys/wait.h>
#include <unistd.h>

namespace deckmate {
namespace {

using test::LogLines;
using Lines = std::vector<std::string>;

/// Runs `body` in a process of its own and returns its exit status, or -1 if it died of a signal.
template <class Body>
int statusOfChild(const Body& body) {
    const pid_t child = fork();
    if (child == 0) {
        body();
        std::_Exit(0);
    }
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

/// What a child that logs by `body` leaves on standard error.
template <class Body>
std::string standardErrorOf(const Body& body) {
    std::array<int, 2> ends{};
    EXPECT_EQ(pipe(ends.data()), 0);
    EXPECT_EQ(statusOfChild([&] {
                  dup2(ends[1], STDERR_FILENO);
                  body();
              }),
              0);
    close(ends[1]);
    std::string text;
    std::array<char, 1000> piece{};
    for (ssize_t got = 1; got > 0;) {
        got = read(ends[0], piece.data(), piece.size());
        text.append(piece.data(), static_cast<std::size_t>(std::max<ssize_t>(got, 0)));
    }
    close(ends[0]);
    return text;
}

TEST(Log, WritesOneLineToStandardError) {
    EXPECT_EQ(standardErrorOf([] { Log::write("queue: not started"); }), "queue: not started\n");
}

TEST(Log, TakesPercentSignsAsTheyAre) {
    EXPECT_EQ(standardErrorOf([] { Log::write("100%s %n %d%%"); }), "100%s %n %d%%\n");
}

TEST(Log, AnEmptyTextIsAnEmptyLine) {
    EXPECT_EQ(standardErrorOf([] { Log::write(""); }), "\n");
}

TEST(Log, ControlCharactersDontBreakTheLine) {
    EXPECT_EQ(standardErrorOf([] { Log::write(std::string("a\nb\0c\rd\x1b[e\x7f", 11)); }),
              "a?b?c?d?[e?\n");
}

TEST(Log, BytesThatAreNoTextPassThrough) {
    EXPECT_EQ(standardErrorOf([] { Log::write("\xff\xc3\xa9"); }), "\xff\xc3\xa9\n");
}

TEST(Log, ALongTextStaysWhole) {
    const std::string text(10'000, 'x');
    EXPECT_EQ(standardErrorOf([&] { Log::write(text); }), text + "\n");
}

TEST(Log, SurvivesAClosedStandardError) {
    EXPECT_EQ(statusOfChild([] {
                  close(STDERR_FILENO);
                  Log::write("to nobody");
              }),
              0);
}

TEST(Log, SurvivesAPipeWithoutReader) {
    EXPECT_EQ(statusOfChild([] {
                  std::array<int, 2> ends{};
                  if (pipe(ends.data()) != 0) {
                      std::_Exit(1);
                  }
                  dup2(ends[1], STDERR_FILENO);
                  close(ends[0]);
                  Log::write("to nobody");
                  Log::write("to nobody again");
              }),
              0);
}

TEST(Log, DoesntWaitForAReaderThatNeverReads) {
    EXPECT_EQ(statusOfChild([] {
                  std::array<int, 2> ends{};
                  if (pipe(ends.data()) != 0) {
                      std::_Exit(1);
                  }
                  dup2(ends[1], STDERR_FILENO);
                  const std::string text(1000, 'x');
                  for (int i = 0; i < 200; ++i) { // a pipe holds 64 KiB
                      Log::write(text);
                  }
              }),
              0);
}

TEST(Log, ASinkGetsTheLinesInsteadOfStandardError) {
    EXPECT_EQ(standardErrorOf([] {
                  const LogLines log;
                  Log::write("watched");
                  if (log.lines() != Lines{"watched"}) {
                      std::_Exit(1);
                  }
              }),
              "");
}

TEST(Log, ASinkGetsTheLineAsItWouldBeWritten) {
    const LogLines log;
    Log::write("a\nb");
    EXPECT_EQ(log.lines(), Lines{"a?b"});
}

TEST(Log, TheSinkBeforeComesBack) {
    const LogLines outer;
    {
        const LogLines inner;
        Log::write("inner");
    }
    Log::write("outer");
    EXPECT_EQ(outer.lines(), Lines{"outer"});
}

TEST(Log, ASinkMayLog) {
    const LogLines log;
    const Log::Sink before = Log::setSink([&](std::string_view line) {
        const Log::Sink own = Log::setSink(nullptr);
        const LogLines inner;
        Log::write("again");
        EXPECT_EQ(inner.lines(), Lines{"again"});
        EXPECT_EQ(line, "once");
    });
    Log::write("once");
    Log::setSink(before);
    EXPECT_EQ(log.lines(), Lines{});
}

TEST(Log, LinesOfSeveralThreadsStayWhole) {
    const std::string text = standardErrorOf([] {
        std::vector<std::thread> threads;
        for (int i = 0; i < 4; ++i) {
            threads.emplace_back([] {
                for (int line = 0; line < 50; ++line) {
                    Log::write("0123456789");
                }
            });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
    });
    std::string expected;
    for (int line = 0; line < 200; ++line) {
        expected += "0123456789\n";
    }
    EXPECT_EQ(text, expected);
}

} // namespace
} // namespace deckmate
