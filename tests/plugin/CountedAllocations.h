#pragma once

#include <atomic>

/**
 * The operators new of a test that links this, which count, and fail when they are asked to. Qt's threads
 * count, too.
 */
namespace CountedAllocations {

extern std::atomic<int> untilFailure; ///< Of the non-throwing kind, which only the models use; -1 for never.
extern std::atomic<int> made;         ///< Of the throwing kind, so far.

} // namespace CountedAllocations
