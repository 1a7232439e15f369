#include "tests/hardening/CountingAllocator.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace tavrel_testing {

namespace {

std::atomic<long> gCalls{0};
std::atomic<long> gLive{0};
std::atomic<long> gFailAt{0};  // the call number that fails; 0: none
std::atomic<bool> gFired{false};

#ifndef TAVREL_ALLOCATOR_NOT_SHARED
// The one allocation routine behind every form of operator new.
void* Allocate(std::size_t size) {
    long const call = gCalls.fetch_add(1) + 1;
    long armed = call;
    if (gFailAt.compare_exchange_strong(armed, 0)) {
        gFired.store(true);
        throw std::bad_alloc();
    }
    void* const block = std::malloc(size == 0 ? 1 : size);
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    gLive.fetch_add(1);
    return block;
}

void Free(void* block) noexcept {
    if (block != nullptr) {
        gLive.fetch_sub(1);
        std::free(block);
    }
}
#endif

}  // namespace

#ifdef TAVREL_ALLOCATOR_NOT_SHARED
bool CountingAllocator::Active() { return false; }
#else
bool CountingAllocator::Active() { return true; }
#endif

long CountingAllocator::LiveBlocks() { return gLive.load(); }

long CountingAllocator::Calls() { return gCalls.load(); }

void CountingAllocator::FailNth(long n) {
    gFired.store(false);
    gFailAt.store(gCalls.load() + n);
}

void CountingAllocator::Disarm() { gFailAt.store(0); }

bool CountingAllocator::Fired() { return gFired.load(); }

}  // namespace tavrel_testing

#ifndef TAVREL_ALLOCATOR_NOT_SHARED
// NOTE: only these are replaced. The standard library's own array and nothrow forms call them,
// so every allocation and release of the program and the module comes here.
void* operator new(std::size_t size) { return tavrel_testing::Allocate(size); }
void operator delete(void* block) noexcept { tavrel_testing::Free(block); }
void operator delete(void* block, std::size_t) noexcept { tavrel_testing::Free(block); }
#endif
