#include "realtime/RealtimeGuard.h"

#include <atomic>
#include <cstddef>
#include <ctime>

#include <dlfcn.h>
#include <poll.h>
#include <pthread.h>

namespace deckmate::test {

namespace {

thread_local bool isGuarded = false;
std::atomic<const char*> firstBreach = nullptr;

void note(const char* name) {
    if (isGuarded) {
        const char* none = nullptr;
        firstBreach.compare_exchange_strong(none, name);
    }
}

/// The function that is replaced here.
template <class Function>
Function* original(const char* name) {
    // The linker answers with a pointer to no type.
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

} // namespace

RealtimeGuard::RealtimeGuard() {
    isGuarded = true;
}

RealtimeGuard::~RealtimeGuard() {
    isGuarded = false;
}

const char* RealtimeGuard::breach() {
    const char* const name = firstBreach.exchange(nullptr);
    return name != nullptr ? name : "";
}

} // namespace deckmate::test

using deckmate::test::note;
using deckmate::test::original;

// The names by which the C library lets replacements of its allocator reach it.
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
void __libc_free(void* block);

void* malloc(std::size_t size) {
    note("malloc");
    return __libc_malloc(size);
}

void* calloc(std::size_t count, std::size_t size) {
    note("calloc");
    return __libc_calloc(count, size);
}

void* realloc(void* block, std::size_t size) {
    note("realloc");
    return __libc_realloc(block, size);
}

void* aligned_alloc(std::size_t alignment, std::size_t size) {
    note("aligned_alloc");
    return __libc_memalign(alignment, size);
}

void free(void* block) {
    note("free");
    __libc_free(block);
}

int pthread_mutex_lock(pthread_mutex_t* mutex) noexcept {
    note("pthread_mutex_lock");
    static const auto lock = original<int(pthread_mutex_t*)>("pthread_mutex_lock");
    return lock(mutex);
}

int pthread_rwlock_rdlock(pthread_rwlock_t* rwlock) noexcept {
    note("pthread_rwlock_rdlock");
    static const auto lock = original<int(pthread_rwlock_t*)>("pthread_rwlock_rdlock");
    return lock(rwlock);
}

int pthread_rwlock_wrlock(pthread_rwlock_t* rwlock) noexcept {
    note("pthread_rwlock_wrlock");
    static const auto lock = original<int(pthread_rwlock_t*)>("pthread_rwlock_wrlock");
    return lock(rwlock);
}

int pthread_cond_wait(pthread_cond_t* condition, pthread_mutex_t* mutex) {
    note("pthread_cond_wait");
    static const auto wait = original<int(pthread_cond_t*, pthread_mutex_t*)>("pthread_cond_wait");
    return wait(condition, mutex);
}

int poll(pollfd* descriptors, nfds_t count, int timeout) {
    note("poll");
    static const auto wait = original<int(pollfd*, nfds_t, int)>("poll");
    return wait(descriptors, count, timeout);
}

int nanosleep(const timespec* duration, timespec* left) {
    note("nanosleep");
    static const auto sleep = original<int(const timespec*, timespec*)>("nanosleep");
    return sleep(duration, left);
}

int clock_nanosleep(clockid_t clock, int flags, const timespec* duration, timespec* left) {
    note("clock_nanosleep");
    static const auto sleep =
        original<int(clockid_t, int, const timespec*, timespec*)>("clock_nanosleep");
    return sleep(clock, flags, duration, left);
}
}
