// The recorder's messages: what each looks like and what it means.
#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <span>
#include <string>
#include <vector>

namespace deckmate::tools {

using Bytes = std::vector<std::uint8_t>;
using ByteView = std::span<const std::uint8_t>;

enum class Kind {
    unknown,
    identityRequest,
    identityReply,
    applicationStart,
    applicationStartDone,
    versionRequest,
    versionReply,
    cardRequest,
    cardReport,
    batteryRequest,
    batteryReply,
    powerOffRequest,
    powerOffReply,
    setClock,
    clockDone,
    setBattery,
    batteryDone,
    setPowerOff,
    powerOffDone,
};

/// What a whole message from F0 to F7 is: its codes and its length have to be right.
Kind kindOf(ByteView message);

/// The bytes between the codes and the closing F7. Of a message that is not unknown.
ByteView parametersOf(ByteView message);

/// A whole message, as the recorder writes it.
Bytes makeMessage(Kind kind, ByteView parameters = {});

/// In words, with the values that the message carries.
std::string meaningOf(ByteView message);

/// "F0 7E 00"; beyond `most` bytes "F0 7E ... (20000 bytes)".
std::string hexOf(ByteView bytes, std::size_t most = 64);

/// YYYY-MM-DD hh:mm:ss of the seven bytes that set the clock.
std::string clockText(ByteView clock);

/// The four characters of a version; in hex if some can't be printed.
std::string versionText(ByteView version);

} // namespace deckmate::tools
