#include "tests/plugin/CountedAllocations.h"

#include <cstdlib>
#include <new>

// A source of its own: where GCC inlines a pair of them, it takes them for operators that do not fit each
// other.

std::atomic<int> CountedAllocations::untilFailure = -1;
std::atomic<int> CountedAllocations::made = 0;

void* operator new(std::size_t size)
{
    ++CountedAllocations::made;
    void* block = std::malloc(size > 0 ? size : 1);
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    return block;
}

void operator delete(void* block) noexcept
{
    std::free(block);
}

void operator delete(void* block, std::size_t) noexcept
{
    std::free(block);
}

void* operator new(std::size_t size, const std::nothrow_t&) noexcept
{
    if (CountedAllocations::untilFailure == 0) {
        return nullptr;
    }
    if (CountedAllocations::untilFailure > 0) {
        --CountedAllocations::untilFailure;
    }
    try {
        return ::operator new(size);
    } catch (...) {
        return nullptr;
    }
}
