// Makes chosen calls on one file fail in a program that this library is preloaded into.
//
//     FAIL_PATH    the file, spelt as the program opens it
//     FAIL_CALL    open, read, write, close, stat or sync
//     FAIL_AT      the number of the first such call that fails, from 1
//     FAIL_WITH    an error number, "short" (half of the bytes) or "zero" (no bytes); several of
//                  them, with commas between, for the calls that follow
//     FAIL_ALWAYS  if set, all calls after those fail in the last way
//     FAIL_LOG     a file that gets a line for each call on FAIL_PATH: its kind, "!" if it failed
//     MOVE_FROM    a file that is moved to FAIL_PATH right before this is first opened for writing,
//                  which adds a line "moved" to the log
//
// Without FAIL_CALL the calls are only noted.
#include <array>
#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

std::string_view setting(const char* name) {
    const char* value = std::getenv(name);
    return value == nullptr ? std::string_view() : value;
}

/// The next definition of a function behind this library's.
template <class Function>
Function* original(const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

std::array<std::atomic<bool>, 4096>& watchedDescriptors() {
    static std::array<std::atomic<bool>, 4096> watched = {};
    return watched;
}

bool isWatched(int descriptor) {
    return descriptor >= 0 && descriptor < 4096 &&
           watchedDescriptors()[static_cast<std::size_t>(descriptor)];
}

void watch(int descriptor, bool isOurs) {
    if (descriptor >= 0 && descriptor < 4096) {
        watchedDescriptors()[static_cast<std::size_t>(descriptor)] = isOurs;
    }
}

// By bare system calls: the functions of the library are the ones replaced here.
void note(std::string line) {
    const std::string path(setting("FAIL_LOG"));
    const auto log = static_cast<int>(syscall(SYS_openat, AT_FDCWD, path.c_str(),
                                              O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0600));
    line += '\n';
    if (log < 0 || syscall(SYS_write, log, line.data(), line.size()) < 0) {
        std::abort(); // a test that doesn't know what failed proves nothing
    }
    syscall(SYS_close, log);
}

/// The way in a comma-separated list at `index`, or at its end if there are `always` more.
std::optional<std::string_view> wayAt(int index, std::string_view list, bool always) {
    for (;; --index) {
        const std::size_t comma = list.find(',');
        const bool isLast = comma == std::string_view::npos;
        if (index == 0 || (isLast && always)) {
            return list.substr(0, comma);
        }
        if (isLast) {
            return std::nullopt;
        }
        list.remove_prefix(comma + 1);
    }
}

/// Counts a call on the file; how it has to fail, if it has to.
std::optional<std::string_view> failure(std::string_view call) {
    static std::atomic<int> calls = 0;
    std::optional<std::string_view> way;
    if (call == setting("FAIL_CALL")) {
        const int index = ++calls - std::stoi(std::string(setting("FAIL_AT")));
        if (index >= 0) {
            way = wayAt(index, setting("FAIL_WITH"), !setting("FAIL_ALWAYS").empty());
        }
    }
    note(std::string(call) + (way ? "!" : ""));
    return way;
}

int failedWith(std::string_view error) {
    errno = std::stoi(std::string(error));
    return -1;
}

/// Calls `transfer` for as many of the `count` bytes as are let through.
template <class Transfer>
ssize_t transferred(std::string_view call, int descriptor, std::size_t count, Transfer transfer) {
    const auto how = isWatched(descriptor) ? failure(call) : std::nullopt;
    if (!how) {
        return transfer(count);
    }
    if (*how == "short") {
        return transfer((count + 1) / 2);
    }
    return *how == "zero" ? 0 : failedWith(*how);
}

/// Lets the file change hands where the program can no longer look first.
void moveOnce(const char* path) {
    static std::atomic<bool> isMoved = false;
    const std::string from(setting("MOVE_FROM"));
    if (from.empty() || isMoved.exchange(true)) {
        return;
    }
    if (syscall(SYS_renameat2, AT_FDCWD, from.c_str(), AT_FDCWD, path, 0) != 0) {
        std::abort();
    }
    note("moved");
}

template <class Open>
int opened(const char* path, int flags, Open open) {
    const bool isOurs = setting("FAIL_PATH") == path;
    if (isOurs) {
        if ((flags & O_ACCMODE) != O_RDONLY) {
            moveOnce(path);
        }
        if (const auto how = failure("open")) {
            return failedWith(*how);
        }
    }
    const int descriptor = open();
    watch(descriptor, isOurs);
    return descriptor;
}

template <class Call>
int allowed(std::string_view kind, int descriptor, Call call) {
    const auto how = isWatched(descriptor) ? failure(kind) : std::nullopt;
    return how ? failedWith(*how) : call();
}

mode_t modeIn(va_list arguments, int flags) {
    return (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(arguments, mode_t) : 0;
}

} // namespace

// NOLINTBEGIN(readability-inconsistent-declaration-parameter-name): the system's are reserved names
extern "C" {

int open(const char* path, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = modeIn(arguments, flags);
    va_end(arguments);
    return opened(path, flags,
                  [&] { return original<decltype(::open)>("open")(path, flags, mode); });
}

int open64(const char* path, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = modeIn(arguments, flags);
    va_end(arguments);
    return opened(path, flags,
                  [&] { return original<decltype(::open64)>("open64")(path, flags, mode); });
}

int openat(int folder, const char* path, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = modeIn(arguments, flags);
    va_end(arguments);
    return opened(path, flags, [&] {
        return original<decltype(::openat)>("openat")(folder, path, flags, mode);
    });
}

int openat64(int folder, const char* path, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = modeIn(arguments, flags);
    va_end(arguments);
    return opened(path, flags, [&] {
        return original<decltype(::openat64)>("openat64")(folder, path, flags, mode);
    });
}

int creat(const char* path, mode_t mode) {
    return opened(path, O_WRONLY | O_CREAT | O_TRUNC,
                  [&] { return original<decltype(::creat)>("creat")(path, mode); });
}

ssize_t read(int descriptor, void* bytes, size_t count) {
    return transferred("read", descriptor, count, [&](size_t allowedCount) {
        return original<decltype(::read)>("read")(descriptor, bytes, allowedCount);
    });
}

ssize_t pread(int descriptor, void* bytes, size_t count, off_t offset) {
    return transferred("read", descriptor, count, [&](size_t allowedCount) {
        return original<decltype(::pread)>("pread")(descriptor, bytes, allowedCount, offset);
    });
}

ssize_t pread64(int descriptor, void* bytes, size_t count, off64_t offset) {
    return pread(descriptor, bytes, count, offset);
}

ssize_t write(int descriptor, const void* bytes, size_t count) {
    return transferred("write", descriptor, count, [&](size_t allowedCount) {
        return original<decltype(::write)>("write")(descriptor, bytes, allowedCount);
    });
}

ssize_t pwrite(int descriptor, const void* bytes, size_t count, off_t offset) {
    return transferred("write", descriptor, count, [&](size_t allowedCount) {
        return original<decltype(::pwrite)>("pwrite")(descriptor, bytes, allowedCount, offset);
    });
}

ssize_t pwrite64(int descriptor, const void* bytes, size_t count, off64_t offset) {
    return pwrite(descriptor, bytes, count, offset);
}

int close(int descriptor) {
    const auto how = isWatched(descriptor) ? failure("close") : std::nullopt;
    watch(descriptor, false);
    // A close that fails has let go of the descriptor all the same.
    const int result = original<decltype(::close)>("close")(descriptor);
    return how ? failedWith(*how) : result;
}

int fstat(int descriptor, struct stat* status) noexcept {
    return allowed("stat", descriptor,
                   [&] { return original<int(int, struct stat*)>("fstat")(descriptor, status); });
}

int fstat64(int descriptor, struct stat64* status) noexcept {
    return allowed("stat", descriptor, [&] {
        return original<int(int, struct stat64*)>("fstat64")(descriptor, status);
    });
}

int ftruncate(int descriptor, off_t length) noexcept {
    return allowed("sync", descriptor,
                   [&] { return original<int(int, off_t)>("ftruncate")(descriptor, length); });
}

int fsync(int descriptor) {
    return allowed("sync", descriptor, [&] { return original<int(int)>("fsync")(descriptor); });
}

int fdatasync(int descriptor) {
    return allowed("sync", descriptor, [&] { return original<int(int)>("fdatasync")(descriptor); });
}

} // extern "C"
// NOLINTEND(readability-inconsistent-declaration-parameter-name)
