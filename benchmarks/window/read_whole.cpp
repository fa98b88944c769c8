// read-whole FILE: the milliseconds that reading a file into memory takes.
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <memory>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

bool readInto(std::byte* block, std::size_t size, int descriptor) {
    std::size_t done = 0;
    while (done < size) {
        const ssize_t count = read(descriptor, block + done, size - done);
        if (count <= 0) {
            return false;
        }
        done += static_cast<std::size_t>(count);
    }
    return true;
}

} // namespace

int main(int count, char** arguments) {
    if (count != 2) {
        std::fputs("usage: read-whole FILE\n", stderr);
        return 2;
    }
    const auto started = std::chrono::steady_clock::now();
    const int descriptor = open(arguments[1], O_RDONLY | O_CLOEXEC);
    struct stat status {};
    if (descriptor < 0 || fstat(descriptor, &status) != 0) {
        std::perror(arguments[1]);
        return 1;
    }
    const auto size = static_cast<std::size_t>(status.st_size);
    const std::unique_ptr<std::byte, decltype(&std::free)> block(
        static_cast<std::byte*>(std::malloc(size)), &std::free);
    if (block == nullptr || !readInto(block.get(), size, descriptor)) {
        std::perror(arguments[1]);
        return 1;
    }
    const std::chrono::duration<double, std::milli> took =
        std::chrono::steady_clock::now() - started;
    std::printf("%.3f\n", took.count());
    return 0;
}
