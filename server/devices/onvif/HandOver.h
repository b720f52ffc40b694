#pragma once

#if defined(__SANITIZE_THREAD__)
#define VOICEDESK_WATCHES_THREADS 1
#elif defined(__has_feature)
#if __has_feature(thread_sanitizer)
#define VOICEDESK_WATCHES_THREADS 1
#endif
#endif

#ifdef VOICEDESK_WATCHES_THREADS
#include <sanitizer/tsan_interface.h>
#endif

/**
 * Shows the thread sanitizer that what one thread did before give happens before what another does after take
 * of the same object. For objects that pass through a library whose locks it does not see; does nothing
 * without the sanitizer, and orders nothing by itself.
 */
namespace HandOver {

/** The calling thread is done with an object for now. */
inline void give([[maybe_unused]] void* object)
{
#ifdef VOICEDESK_WATCHES_THREADS
    __tsan_release(object);
#endif
}

/** The calling thread goes on with an object. */
inline void take([[maybe_unused]] void* object)
{
#ifdef VOICEDESK_WATCHES_THREADS
    __tsan_acquire(object);
#endif
}

/** Takes an object, and gives it at the end of the scope: for a callback of the library. */
class Scope
{
public:
    /** @param object that was given */
    explicit Scope(void* object) : m_object(object) { take(object); }
    ~Scope() { give(m_object); }
    Scope(const Scope&) = delete;
    Scope& operator=(const Scope&) = delete;

private:
    void* m_object;
};

} // namespace HandOver
