#include "bench/AllocationCounter.h"

#include <cerrno>
#include <cstdlib>
#include <new>

namespace {

thread_local std::uint64_t newCount = 0;
thread_local std::uint64_t mallocCount = 0;

} // namespace

namespace AllocationCounter {

std::uint64_t news()
{
    return newCount;
}

std::uint64_t mallocs()
{
    return mallocCount;
}

} // namespace AllocationCounter

void* operator new(std::size_t size)
{
    ++newCount;
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

void operator delete(void* block, std::size_t /*size*/) noexcept
{
    std::free(block);
}

#ifdef __GLIBC__
// glibc lets a program have its own malloc in front of the library's.
#pragma GCC visibility push(default)
extern "C" {
void* __libc_malloc(std::size_t size);                          // NOLINT
void* __libc_calloc(std::size_t count, std::size_t size);       // NOLINT
void* __libc_realloc(void* block, std::size_t size);            // NOLINT
void* __libc_memalign(std::size_t alignment, std::size_t size); // NOLINT

void* malloc(std::size_t size)
{
    ++mallocCount;
    return __libc_malloc(size);
}

void* calloc(std::size_t count, std::size_t size)
{
    ++mallocCount;
    return __libc_calloc(count, size);
}

void* realloc(void* block, std::size_t size)
{
    ++mallocCount;
    return __libc_realloc(block, size);
}

int posix_memalign(void** block, std::size_t alignment, std::size_t size)
{
    ++mallocCount;
    *block = __libc_memalign(alignment, size);
    return *block != nullptr ? 0 : ENOMEM;
}
}
#pragma GCC visibility pop
#endif
