#include "platform/alsa/SequencerClient.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <system_error>
#include <utility>

#include <poll.h>
#include <unistd.h>

namespace deckmate {

namespace {

static_assert(sequencerPort::canRead == SND_SEQ_PORT_CAP_READ);
static_assert(sequencerPort::canWrite == SND_SEQ_PORT_CAP_WRITE);
static_assert(sequencerPort::canSubscribeRead == SND_SEQ_PORT_CAP_SUBS_READ);
static_assert(sequencerPort::canSubscribeWrite == SND_SEQ_PORT_CAP_SUBS_WRITE);
static_assert(sequencerPort::noExport == SND_SEQ_PORT_CAP_NO_EXPORT);

constexpr const char* sequencerFile = "/dev/snd/seq";
/// In cells of some 28 bytes: the most that the kernel gives.
constexpr std::size_t inputPool = 2000;
/// Room for the largest event that fits into that pool: one that doesn't fit is never read.
constexpr std::size_t inputBuffer = 128UL * 1024;
/// A device's own buffer holds 4096 bytes, and an event needs free cells for all of its bytes.
constexpr std::size_t sysExPiece = 256;
/// No message but System Exclusive is longer, and the sequencer's own events are no more than four.
constexpr std::size_t shortMessages = 64;
/// Port numbers are used in turn up to here: what has arrived for a port that was deleted must not
/// reach the next one.
constexpr int portNumbers = 200;

constexpr std::uint8_t startOfSysEx = 0xF0;
constexpr std::uint8_t endOfSysEx = 0xF7;

template <class Info, int (*make)(Info**), void (*free)(Info*)>
class InfoOwner {
public:
    InfoOwner() {
        if (make(&info_) < 0) {
            info_ = nullptr;
        }
    }
    ~InfoOwner() { free(info_); }
    InfoOwner(const InfoOwner&) = delete;
    InfoOwner& operator=(const InfoOwner&) = delete;
    InfoOwner(InfoOwner&&) = delete;
    InfoOwner& operator=(InfoOwner&&) = delete;

    Info* get() const { return info_; }

private:
    Info* info_ = nullptr;
};

using ClientInfo =
    InfoOwner<snd_seq_client_info_t, snd_seq_client_info_malloc, snd_seq_client_info_free>;
using PortInfo = InfoOwner<snd_seq_port_info_t, snd_seq_port_info_malloc, snd_seq_port_info_free>;
using SubscriptionInfo =
    InfoOwner<snd_seq_port_subscribe_t, snd_seq_port_subscribe_malloc, snd_seq_port_subscribe_free>;

std::string textOf(const char* name) {
    return name != nullptr ? name : "";
}

SequencerPort portOf(const snd_seq_port_info_t* info) {
    return {{snd_seq_port_info_get_client(info), snd_seq_port_info_get_port(info)},
            textOf(snd_seq_port_info_get_name(info)),
            snd_seq_port_info_get_capability(info)};
}

std::optional<SequencerAnnouncement> announcementOf(snd_seq_event_type_t type) {
    switch (type) {
    case SND_SEQ_EVENT_CLIENT_START:
    case SND_SEQ_EVENT_CLIENT_CHANGE:
        return SequencerAnnouncement::clientPresent;
    case SND_SEQ_EVENT_CLIENT_EXIT:
        return SequencerAnnouncement::clientLeft;
    case SND_SEQ_EVENT_PORT_START:
    case SND_SEQ_EVENT_PORT_CHANGE:
        return SequencerAnnouncement::portPresent;
    case SND_SEQ_EVENT_PORT_EXIT:
        return SequencerAnnouncement::portLeft;
    default:
        return std::nullopt;
    }
}

bool isClientsAnnouncement(SequencerAnnouncement what) {
    return what == SequencerAnnouncement::clientPresent ||
           what == SequencerAnnouncement::clientLeft;
}

/// How many of the bytes belong to the System Exclusive message that they begin with or go on with,
/// and whether it goes on behind them.
std::pair<std::size_t, bool> sysExPart(std::span<const std::uint8_t> bytes) {
    for (std::size_t i = bytes[0] == startOfSysEx ? 1 : 0; i < bytes.size(); ++i) {
        if (bytes[i] == endOfSysEx) {
            return {i + 1, false};
        }
        if (bytes[i] >= 0x80 && bytes[i] < endOfSysEx) {
            return {i, false}; // broken off by another message
        }
    }
    return {bytes.size(), true};
}

} // namespace

SequencerOutput::SequencerOutput() {
    snd_midi_event_t* encoder = nullptr;
    if (snd_midi_event_new(shortMessages, &encoder) == 0) {
        encoder_.reset(encoder);
    }
}

std::unique_ptr<SequencerClient> SequencerClient::open(std::string& error) {
    // Asked first, because the library complains to the standard error.
    if (access(sequencerFile, R_OK | W_OK) != 0) {
        error = std::generic_category().message(errno);
        return nullptr;
    }
    snd_seq_t* sequencer = nullptr;
    const int status = snd_seq_open(&sequencer, "default", SND_SEQ_OPEN_DUPLEX, SND_SEQ_NONBLOCK);
    if (status < 0) {
        error = snd_strerror(status);
        return nullptr;
    }
    return std::make_unique<SequencerClient>(sequencer);
}

SequencerClient::SequencerClient(snd_seq_t* sequencer) : sequencer_(sequencer) {
    snd_midi_event_t* decoder = nullptr;
    if (snd_midi_event_new(shortMessages, &decoder) == 0) {
        decoder_.reset(decoder);
        snd_midi_event_no_status(decoder, 1);
    }
    snd_seq_set_client_pool_input(sequencer, inputPool);
    snd_seq_set_input_buffer_size(sequencer, inputBuffer);
    pollfd polled = {};
    if (snd_seq_poll_descriptors(sequencer, &polled, 1, POLLIN) == 1) {
        descriptor_ = polled.fd;
    }
}

SequencerClient::~SequencerClient() = default;

void SequencerClient::start(SequencerHandlers handlers) {
    handlers_ = std::make_shared<const SequencerHandlers>(std::move(handlers));
    watch_ = RunLoop::main().watchReadable(descriptor_, [this] { pump(); });
}

int SequencerClient::number() const {
    return snd_seq_client_id(sequencer_.get());
}

void SequencerClient::setName(const std::string& name) {
    snd_seq_set_client_name(sequencer_.get(), name.c_str());
}

std::optional<int> SequencerClient::createPort(const std::string& name, unsigned capabilities) {
    const PortInfo info;
    for (int tries = 0; info.get() != nullptr && tries < portNumbers; ++tries) {
        lastPort_ = (lastPort_ + 1) % portNumbers;
        if (ports_.contains(lastPort_)) {
            continue;
        }
        snd_seq_port_info_set_port(info.get(), lastPort_);
        snd_seq_port_info_set_port_specified(info.get(), 1);
        snd_seq_port_info_set_name(info.get(), name.c_str());
        snd_seq_port_info_set_capability(info.get(), capabilities);
        snd_seq_port_info_set_type(info.get(),
                                   SND_SEQ_PORT_TYPE_MIDI_GENERIC | SND_SEQ_PORT_TYPE_APPLICATION);
        if (snd_seq_create_port(sequencer_.get(), info.get()) < 0) {
            break;
        }
        const int port = snd_seq_port_info_get_port(info.get());
        ports_.insert(port);
        return port;
    }
    return std::nullopt;
}

void SequencerClient::deletePort(int port) {
    snd_seq_delete_port(sequencer_.get(), port);
    ports_.erase(port);
}

bool SequencerClient::connectToAnnouncements(int port) {
    return connectFrom(port, {SND_SEQ_CLIENT_SYSTEM, SND_SEQ_PORT_SYSTEM_ANNOUNCE});
}

bool SequencerClient::connectFrom(int port, SequencerAddress source) {
    const int status = snd_seq_connect_from(sequencer_.get(), port, source.client, source.port);
    return status == 0 || status == -EBUSY;
}

void SequencerClient::disconnectFrom(int port, SequencerAddress source) {
    snd_seq_disconnect_from(sequencer_.get(), port, source.client, source.port);
}

bool SequencerClient::connectTo(int port, SequencerAddress destination) {
    const int status =
        snd_seq_connect_to(sequencer_.get(), port, destination.client, destination.port);
    return status == 0 || status == -EBUSY;
}

bool SequencerClient::isConnectedFrom(int port, SequencerAddress source) const {
    return hasConnection(source, {number(), port});
}

bool SequencerClient::isConnectedTo(int port, SequencerAddress destination) const {
    return hasConnection({number(), port}, destination);
}

bool SequencerClient::hasConnection(SequencerAddress sender, SequencerAddress receiver) const {
    const auto number = [](int value) { return static_cast<unsigned char>(value); };
    const snd_seq_addr_t from = {number(sender.client), number(sender.port)};
    const snd_seq_addr_t to = {number(receiver.client), number(receiver.port)};
    const SubscriptionInfo info;
    if (info.get() == nullptr) {
        return false;
    }
    snd_seq_port_subscribe_set_sender(info.get(), &from);
    snd_seq_port_subscribe_set_dest(info.get(), &to);
    return snd_seq_get_port_subscription(sequencer_.get(), info.get()) == 0;
}

// Sending

bool SequencerClient::put(snd_seq_event_t& event, int port, SequencerAddress destination) {
    event.source.port = static_cast<unsigned char>(port);
    event.dest.client = static_cast<unsigned char>(destination.client);
    event.dest.port = static_cast<unsigned char>(destination.port);
    event.queue = SND_SEQ_QUEUE_DIRECT;
    return !isGone_ && snd_seq_event_output_direct(sequencer_.get(), &event) >= 0;
}

bool SequencerClient::sendPiece(int port, SequencerAddress destination,
                                std::span<const std::uint8_t> bytes) {
    std::vector<std::uint8_t> copy(bytes.begin(),
                                   bytes.end()); // the event wants to be able to write
    snd_seq_event_t event = {};
    event.type = SND_SEQ_EVENT_SYSEX;
    event.flags = SND_SEQ_EVENT_LENGTH_VARIABLE;
    event.data.ext.len = static_cast<unsigned>(copy.size());
    event.data.ext.ptr = copy.data();
    return put(event, port, destination);
}

bool SequencerClient::send(int port, SequencerAddress destination,
                           std::span<const std::uint8_t> bytes, SequencerOutput& output) {
    bool hasLeft = true; // once something is lost, the rest isn't sent either, only followed
    while (!bytes.empty()) {
        if (output.isInSysEx_ || bytes[0] == startOfSysEx) {
            const auto [count, goesOn] = sysExPart(bytes);
            output.isInSysEx_ = goesOn;
            for (auto part = bytes.first(count); !part.empty();) {
                const auto piece = part.first(std::min(part.size(), sysExPiece));
                hasLeft = hasLeft && sendPiece(port, destination, piece);
                part = part.subspan(piece.size());
            }
            bytes = bytes.subspan(count);
            continue;
        }
        snd_seq_event_t event = {};
        if (output.encoder_ &&
            snd_midi_event_encode_byte(output.encoder_.get(), bytes[0], &event) == 1 &&
            event.type != SND_SEQ_EVENT_NONE) {
            hasLeft = hasLeft && put(event, port, destination);
        }
        bytes = bytes.subspan(1);
    }
    return hasLeft;
}

void SequencerClient::dropOutput() {
    snd_seq_drop_output(sequencer_.get());
}

// Receiving

void SequencerClient::pump() {
    const auto handlers = handlers_; // held here, because they may destroy this
    const std::weak_ptr<const bool> exists = exists_;
    const int available = snd_seq_event_input_pending(sequencer_.get(), 1);
    if (available == -ENOSPC) {
        handlers->inputLost();
        return;
    }
    if (available == 0 || available == -EAGAIN || available == -EINTR) {
        if (hasFailed()) {
            leave();
        }
        return;
    }
    if (available < 0) {
        leave();
        return;
    }
    // What has been read is no longer in the descriptor, so all of it is handled now; a handler
    // that runs an event loop of its own may do so before this one gets there.
    while (!exists.expired() && snd_seq_event_input_pending(sequencer_.get(), 0) > 0) {
        snd_seq_event_t* event = nullptr;
        if (snd_seq_event_input(sequencer_.get(), &event) < 0 || event == nullptr) {
            return;
        }
        handle(*event, *handlers);
    }
}

void SequencerClient::handle(const snd_seq_event_t& event, const SequencerHandlers& handlers) {
    const SequencerAddress source = {event.source.client, event.source.port};
    if (source == SequencerAddress{SND_SEQ_CLIENT_SYSTEM, SND_SEQ_PORT_SYSTEM_ANNOUNCE}) {
        const auto what = announcementOf(event.type);
        if (what && handlers.announced) {
            const int port = isClientsAnnouncement(*what) ? 0 : event.data.addr.port;
            handlers.announced(*what, {event.data.addr.client, port});
        }
        return;
    }
    const int port = event.dest.port;
    const std::vector<std::uint8_t> bytes = bytesOf(event);
    if (!bytes.empty() && handlers.received) {
        handlers.received(source, port, bytes);
    }
}

std::vector<std::uint8_t> SequencerClient::bytesOf(const snd_seq_event_t& event) {
    if (event.type == SND_SEQ_EVENT_SYSEX) {
        // Another length would come with a pointer into the sender's memory.
        if ((event.flags & SND_SEQ_EVENT_LENGTH_MASK) != SND_SEQ_EVENT_LENGTH_VARIABLE) {
            return {};
        }
        const auto* const data = static_cast<const std::uint8_t*>(event.data.ext.ptr);
        return {data, data + event.data.ext.len};
    }
    std::array<std::uint8_t, shortMessages> bytes = {};
    const long count = decoder_ ? snd_midi_event_decode(decoder_.get(), bytes.data(),
                                                        static_cast<long>(bytes.size()), &event)
                                : 0;
    return {bytes.begin(), bytes.begin() + std::clamp<long>(count, 0, bytes.size())};
}

bool SequencerClient::hasFailed() const {
    pollfd asked = {.fd = descriptor_, .events = POLLIN, .revents = 0};
    return poll(&asked, 1, 0) == 1 && (asked.revents & (POLLERR | POLLHUP | POLLNVAL)) != 0;
}

void SequencerClient::leave() {
    isGone_ = true;
    watch_ = nullptr;
    if (const auto handlers = handlers_; handlers->gone) {
        handlers->gone();
    }
}

// Who is there

std::vector<SequencerListing> SequencerClient::scan() const {
    std::vector<SequencerListing> all;
    const ClientInfo client;
    const PortInfo port;
    if (client.get() == nullptr || port.get() == nullptr || isGone_) {
        return all;
    }
    snd_seq_client_info_set_client(client.get(), -1);
    while (snd_seq_query_next_client(sequencer_.get(), client.get()) >= 0) {
        SequencerListing& listing = all.emplace_back();
        listing.client = snd_seq_client_info_get_client(client.get());
        listing.name = textOf(snd_seq_client_info_get_name(client.get()));
        snd_seq_port_info_set_client(port.get(), listing.client);
        snd_seq_port_info_set_port(port.get(), -1);
        while (snd_seq_query_next_port(sequencer_.get(), port.get()) >= 0) {
            listing.ports.push_back(portOf(port.get()));
        }
    }
    return all;
}

std::optional<std::string> SequencerClient::clientName(int client) const {
    const ClientInfo info;
    if (info.get() == nullptr ||
        snd_seq_get_any_client_info(sequencer_.get(), client, info.get()) < 0) {
        return std::nullopt;
    }
    return textOf(snd_seq_client_info_get_name(info.get()));
}

std::optional<SequencerPort> SequencerClient::portAt(SequencerAddress address) const {
    const PortInfo info;
    if (info.get() == nullptr ||
        snd_seq_get_any_port_info(sequencer_.get(), address.client, address.port, info.get()) < 0) {
        return std::nullopt;
    }
    return portOf(info.get());
}

} // namespace deckmate
