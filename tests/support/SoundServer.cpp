#include "support/SoundServer.h"

#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace deckmate::test {

namespace {

/// What sound programs find of the machine: nothing but this folder.
const std::filesystem::path& privateFolder() {
    static const TemporaryFolder folder;
    static const bool isSet = [] {
        const std::string path = folder.path();
        for (const char* name : {"HOME", "XDG_RUNTIME_DIR", "XDG_CONFIG_HOME", "XDG_STATE_HOME",
                                 "PULSE_RUNTIME_PATH", "PULSE_STATE_PATH"}) {
            setenv(name, path.c_str(), 1);
        }
        setenv("PULSE_SERVER", ("unix:" + path + "/server").c_str(), 1);
        setenv("ALSA_CONFIG_PATH", "/dev/null", 1);
        setenv("JACK_NO_START_SERVER", "1", 1);
        setenv("AUDIODEVICE", "none", 1);
        unsetenv("DBUS_SESSION_BUS_ADDRESS");
        return true;
    }();
    static_cast<void>(isSet);
    return folder.path();
}

bool accepts(const std::filesystem::path& socketPath) {
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, socketPath.c_str(), sizeof address.sun_path - 1);
    const int connection = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const bool isAccepted =
        connect(connection, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
    close(connection);
    return isAccepted;
}

} // namespace

SoundServer::SoundServer(std::uint32_t rate) : rate_(rate) {
    privateFolder();
    start();
}

SoundServer::~SoundServer() = default;

void SoundServer::hideAll() {
    privateFolder();
}

void SoundServer::start() {
    const std::filesystem::path address = privateFolder() / "server";
    // No rewinds: else an idle sink renders two seconds ahead.
    process_ = std::make_unique<ChildProcess>(std::vector<std::string>{
        "pulseaudio", "-n", "--daemonize=no", "--exit-idle-time=-1", "--use-pid-file=no",
        "--high-priority=no", "--disable-shm", "--realtime=no", "--log-level=error", "--load",
        "module-null-sink sink_name=h8 channels=2 format=float32le norewinds=1 rate=" +
            std::to_string(rate_),
        "--load", "module-native-protocol-unix auth-anonymous=1 socket=" + address.string()});
    waitUntil([&] { return accepts(address); }, "starting a sound server");
}

void SoundServer::kill() {
    process_.reset();
}

void SoundServer::freeze() {
    process_->signal(SIGSTOP);
}

void SoundServer::thaw() {
    process_->signal(SIGCONT);
}

bool SoundServer::ask(const std::vector<std::string>& request) const {
    std::vector<std::string> command = {"pactl"};
    command.insert(command.end(), request.begin(), request.end());
    return ChildProcess(command, "/dev/null").hasSucceeded();
}

Capture::Capture(const SoundServer& server)
    : file_(folder_ / "captured"),
      process_({"parec", "--raw", "--device=h8.monitor", "--format=float32le", "--channels=2",
                "--latency-msec=20", "--rate=" + std::to_string(server.rate())},
               file_) {
    waitUntil([this] { return !samples().empty(); }, "recording the sink");
}

std::vector<float> Capture::samples() const {
    const Bytes bytes = contentsOf(file_);
    std::vector<float> samples(bytes.size() / (2 * sizeof(float)) * 2);
    if (!samples.empty()) {
        std::memcpy(samples.data(), bytes.data(), samples.size() * sizeof(float));
    }
    return samples;
}

std::vector<float> Capture::heard() const {
    const std::vector<float> all = samples();
    std::vector<float> heard;
    heard.reserve(all.size());
    for (std::size_t i = 0; i + 1 < all.size(); i += 2) {
        if (all[i] != 0.0F || all[i + 1] != 0.0F) {
            heard.push_back(all[i]);
            heard.push_back(all[i + 1]);
        }
    }
    return heard;
}

} // namespace deckmate::test
