#include "h8-simulator/Protocol.h"

#include <gtest/gtest.h>
#include <string>
#include <utility>
#include <vector>

namespace deckmate::tools {
namespace {

const Bytes cardReport = {0xF0, 0x52, 0x00, 0x00, 0x67, 0x00, 0x01, 0x02, 0x03, 0x04, 0x00,
                          0x00, 0x00, 0x04, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
                          0x00, 0x00, 0x02, 0x00, 0x00, 0x00, 0x00, 0x00, 0xF7};

const std::vector<std::pair<Bytes, std::string>> meanings = {
    {{0xF0, 0x7E, 0x00, 0x06, 0x01, 0xF7}, "identity request"},
    {{0xF0, 0x7E, 0x00, 0x06, 0x02, 0x52, 0x6E, 0x00, 0x01, 0x30, 0x31, 0x32, 0x33, 0x00, 0xF7},
     "identity: 52 6E 00 01, version 0123"},
    {{0xF0, 0x52, 0x00, 0x00, 0x52, 0xF7}, "application start"},
    {{0xF0, 0x52, 0x00, 0x00, 0x00, 0x15, 0xF7}, "application start acknowledged"},
    {{0xF0, 0x52, 0x00, 0x00, 0x10, 0x01, 0xF7}, "version request"},
    {{0xF0, 0x52, 0x00, 0x00, 0x11, 0x01, 0x30, 0x32, 0x31, 0x30, 0xF7}, "version: 0210"},
    {{0xF0, 0x52, 0x00, 0x00, 0x67, 0x01, 0xF7}, "card state request"},
    {cardReport, "card state: card 1, 02:03:04 remaining, 8388608 of 536870912 bytes used"},
    {{0xF0, 0x52, 0x00, 0x00, 0x46, 0x01, 0xF7}, "battery type request"},
    {{0xF0, 0x52, 0x00, 0x00, 0x45, 0x01, 0x02, 0xF7}, "battery type: 2"},
    {{0xF0, 0x52, 0x00, 0x00, 0x46, 0x02, 0xF7}, "auto power-off request"},
    {{0xF0, 0x52, 0x00, 0x00, 0x45, 0x02, 0x03, 0xF7}, "auto power-off: 3"},
    {{0xF0, 0x52, 0x00, 0x00, 0x31, 0x00, 0x14, 0x1A, 0x03, 0x05, 0x09, 0x07, 0x02, 0xF7},
     "set date and time: 2026-03-05 09:07:02"},
    {{0xF0, 0x52, 0x00, 0x00, 0x00, 0x0F, 0xF7}, "date and time acknowledged"},
    {{0xF0, 0x52, 0x00, 0x00, 0x31, 0x01, 0x02, 0xF7}, "set battery type: 2"},
    {{0xF0, 0x52, 0x00, 0x00, 0x00, 0x10, 0xF7}, "battery type acknowledged"},
    {{0xF0, 0x52, 0x00, 0x00, 0x31, 0x02, 0x00, 0xF7}, "set auto power-off: 0"},
    {{0xF0, 0x52, 0x00, 0x00, 0x00, 0x11, 0xF7}, "auto power-off acknowledged"},
};

TEST(Protocol, EveryMessageHasItsMeaning) {
    for (const auto& [message, meaning] : meanings) {
        EXPECT_EQ(meaningOf(message), meaning);
    }
}

TEST(Protocol, OneByteMoreIsUnknown) {
    for (const auto& [message, meaning] : meanings) {
        Bytes longer = message;
        longer.insert(longer.end() - 1, 0x00);
        EXPECT_EQ(kindOf(longer), Kind::unknown) << meaning;
    }
}

TEST(Protocol, OneByteLessIsUnknown) {
    for (const auto& [message, meaning] : meanings) {
        Bytes shorter = message;
        shorter.erase(shorter.end() - 2);
        EXPECT_EQ(kindOf(shorter), Kind::unknown) << meaning;
    }
}

TEST(Protocol, WithoutItsEndAMessageIsUnknown) {
    for (const auto& [message, meaning] : meanings) {
        Bytes open = message;
        open.back() = 0x00;
        EXPECT_EQ(kindOf(open), Kind::unknown) << meaning;
    }
}

TEST(Protocol, OtherHeadersAreUnknown) {
    for (const auto& [message, meaning] : meanings) {
        for (std::size_t i = 0; i < 4; ++i) {
            Bytes other = message;
            other[i] = 0x11;
            EXPECT_EQ(kindOf(other), Kind::unknown) << meaning << ", position " << i;
        }
    }
}

TEST(Protocol, IdentityMayBeAskedOfEveryDevice) {
    EXPECT_EQ(kindOf(Bytes{0xF0, 0x7E, 0x7F, 0x06, 0x01, 0xF7}), Kind::identityRequest);
}

TEST(Protocol, BytesOfAnyNumberHaveAMeaning) {
    for (std::size_t size = 0; size < 40; ++size) {
        EXPECT_EQ(meaningOf(Bytes(size, 0xF0)), "unknown");
    }
}

TEST(Protocol, ReportWithoutCardSaysSo) {
    Bytes report = cardReport;
    report[6] = 0;
    EXPECT_EQ(meaningOf(report), "card state: no card");
}

TEST(Protocol, VersionThatCannotBePrintedIsShownInHex) {
    EXPECT_EQ(versionText(Bytes{0x30, 0x00, 0x30, 0x30}), "30 00 30 30");
}

TEST(Protocol, ParametersLieBetweenCodesAndEnd) {
    const ByteView parameters = parametersOf(cardReport);
    EXPECT_EQ(Bytes(parameters.begin(), parameters.end()),
              Bytes(cardReport.begin() + 6, cardReport.end() - 1));
}

TEST(Protocol, HexIsCutBehindTheMost) {
    EXPECT_EQ(hexOf(Bytes{0xF0, 0x0A, 0xF7}, 3), "F0 0A F7");
    EXPECT_EQ(hexOf(Bytes{0xF0, 0x0A, 0xF7}, 2), "F0 0A ... (3 bytes)");
}

TEST(Protocol, HexOfNothingIsEmpty) {
    EXPECT_EQ(hexOf({}), "");
}

} // namespace
} // namespace deckmate::tools
