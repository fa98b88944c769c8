#include "desktop/monkey/World.h"

#include "support/Seeds.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

namespace deckmate::test {

namespace {

namespace fs = std::filesystem;

constexpr std::array folders = {"takes", "takes/inner", "takes/inner/deep", "takes/other", "."};

void write(const fs::path& path, const Bytes& bytes) {
    std::ofstream stream(path, std::ios::binary);
    stream.write(reinterpret_cast<const char*>(bytes.data()),
                 static_cast<std::streamsize>(bytes.size()));
}

/// A saw tooth, so that the meters have something to show.
Bytes toneOf(std::size_t frames) {
    Bytes samples;
    for (std::size_t i = 0; i < frames; ++i) {
        const auto value = static_cast<std::int32_t>(i % 100 * 80000) - 4000000;
        const Bytes frame = pcm24({value, value / 3});
        samples.insert(samples.end(), frame.begin(), frame.end());
    }
    return samples;
}

Bytes floatTone(std::size_t frames) {
    Bytes samples;
    for (std::size_t i = 0; i < frames; ++i) {
        const Bytes frame = floats({static_cast<float>(i % 50) / 50.0F - 0.5F, 0.25F});
        samples.insert(samples.end(), frame.begin(), frame.end());
    }
    return samples;
}

bool isRaw(const Bytes& bytes) {
    constexpr std::string_view mark = "MSRAW=ON";
    return std::search(bytes.begin(), bytes.end(), mark.begin(), mark.end()) != bytes.end();
}

} // namespace

World::World() {
    const auto add = [this](const std::string& name, Bytes bytes) {
        takes_.push_back({(isRaw(bytes) ? "raw " : "plain ") + name + ".wav", std::move(bytes)});
    };
    // Of even sizes: what follows an odd chunk can't be played.
    const std::string rawHistory = std::string(BextTexts().history) + " ";
    const BextTexts raw = {.history = rawHistory};
    const std::string history = std::string(plainHistory) + " ";
    const BextTexts plain = {.history = history};
    for (const std::size_t frames : {9600U, 48000U, 96000U, 240000U}) {
        add(std::to_string(frames), recording(toneOf(frames), {}, raw));
        add(std::to_string(frames), recording(toneOf(frames), {}, plain));
    }
    add("float", recording(floatTone(44100), {.tag = 3, .rate = 44100, .bits = 32}, raw));
    add("float", recording(floatTone(96000), {.tag = 3, .rate = 96000, .bits = 32}, plain));
    const std::size_t ordinary = takes_.size();
    for (const Seed& seed : seeds()) {
        if (seed.reason == "accepted") {
            add("odd " + seed.name, seed.bytes);
        } else {
            takes_.push_back({"broken " + seed.name + ".WAV", seed.bytes});
        }
    }
    for (const char* const name : folders) {
        fs::create_directories(root() / name);
    }
    for (std::size_t i = 0; i < ordinary; ++i) {
        write(takes() / takes_[i].name, takes_[i].bytes);
    }
    fs::create_directory(root() / "kept");
    write(good(), takes_[4].bytes);
    write(bad(), text("no recording"));
}

fs::path World::anyFolder(std::uint64_t which) const {
    return root() / folders.at(which % folders.size());
}

fs::path World::anyFile(std::uint64_t which) const {
    return anyFolder(which / 7) / takes_[which % takes_.size()].name;
}

void World::makeFile(std::uint64_t which) const {
    write(anyFile(which), takes_[which % takes_.size()].bytes);
}

void World::removeFile(std::uint64_t which) const {
    std::error_code ignored;
    fs::remove(anyFile(which), ignored);
}

void World::cutFile(std::uint64_t which) const {
    std::error_code error;
    const auto size = fs::file_size(anyFile(which), error);
    if (!error) {
        fs::resize_file(anyFile(which), size / 2, error);
    }
}

void World::removeFolder(std::uint64_t which) const {
    std::error_code ignored;
    if (const fs::path folder = anyFolder(which); folder.filename() != ".") {
        fs::remove_all(folder, ignored);
    }
}

void World::makeFolder(std::uint64_t which) const {
    std::error_code ignored;
    fs::create_directories(anyFolder(which), ignored);
    for (std::uint64_t i = 0; i < 4; ++i) {
        makeFile(which + i * 11);
    }
}

void World::turnServer() {
    if (std::exchange(isServerUp_, !isServerUp_)) {
        server_.kill();
        isServerStalled_ = false;
    } else {
        server_.start();
    }
}

void World::stallServer() {
    if (!isServerUp_) {
        return;
    }
    if (std::exchange(isServerStalled_, !isServerStalled_)) {
        server_.thaw();
    } else {
        server_.freeze();
    }
}

void World::haveServer() {
    if (isServerStalled_) {
        stallServer();
    }
    if (!isServerUp_) {
        turnServer();
    }
}

} // namespace deckmate::test
