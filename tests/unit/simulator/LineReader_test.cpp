#include "h8-simulator/LineReader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace deckmate::tools {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Optional;
using testing::SizeIs;
using testing::StrEq;

TEST(LineReader, LinesOfOnePiece) {
    LineReader reader;
    EXPECT_THAT(reader.read("one\n\ntwo\n"),
                ElementsAre(Optional(StrEq("one")), Optional(StrEq("")), Optional(StrEq("two"))));
}

TEST(LineReader, LineCutIntoPieces) {
    LineReader reader;
    EXPECT_THAT(reader.read("car"), IsEmpty());
    EXPECT_THAT(reader.read("d in"), IsEmpty());
    EXPECT_THAT(reader.read("\n"), ElementsAre(Optional(StrEq("card in"))));
}

TEST(LineReader, LastLineNeedsNoBreak) {
    LineReader reader;
    reader.read("quit");
    EXPECT_THAT(reader.finish(), ElementsAre(Optional(StrEq("quit"))));
}

TEST(LineReader, NothingIsLeftBehindTheLastBreak) {
    LineReader reader;
    reader.read("quit\n");
    EXPECT_THAT(reader.finish(), IsEmpty());
}

TEST(LineReader, LongestLineIsGiven) {
    LineReader reader;
    const std::string line(LineReader::longest, 'x');
    EXPECT_THAT(reader.read(line + "\n"), ElementsAre(Optional(SizeIs(LineReader::longest))));
}

TEST(LineReader, LongerLineIsNamedOnceAndTheNextOneIsGood) {
    LineReader reader;
    const std::string line(LineReader::longest, 'x');
    EXPECT_THAT(reader.read(line), IsEmpty());
    EXPECT_THAT(reader.read("x"), IsEmpty());
    EXPECT_THAT(reader.read("x\nquit\n"), ElementsAre(std::nullopt, Optional(StrEq("quit"))));
}

TEST(LineReader, LongerLineAtTheEndIsNamedToo) {
    LineReader reader;
    reader.read(std::string(LineReader::longest + 1, 'x'));
    EXPECT_THAT(reader.finish(), ElementsAre(std::nullopt));
}

} // namespace
} // namespace deckmate::tools
