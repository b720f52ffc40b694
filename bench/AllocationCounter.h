#pragma once

#include <cstdint>

/** Counts the allocations of the thread that asks. */
namespace AllocationCounter {

/** Calls of operator new: the allocations of C++ code. */
std::uint64_t news();

/** Calls of malloc and its kin, those of operator new and of libraries in C included; 0 where unknown. */
std::uint64_t mallocs();

} // namespace AllocationCounter
