#pragma once

#include <boost/lockfree/queue.hpp>
#include <boost/make_shared.hpp>
#include <boost/shared_ptr.hpp>

#include <atomic>
#include <cstdint>

namespace QRNL::SDK::Utility {

/**
 * A pool of reusable frames, so that a steady stream allocates none.
 *
 *   acquire --> holders (counted) --> last release --> pool --> acquire ...
 *
 * A frame with holders keeps its pool alive, and returns to it also after the last FrameQueue of the pool was
 * deleted; the pool frees its frames when it has neither. The contents of a frame are not cleared on its
 * return. All operations may be called on any thread.
 *
 * @tparam FrameType has a member `references` (std::atomic<std::uint32_t>), a member `owner` (OwnerPtr of
 * this pool), and a static function `clear(FrameType&)` that frees its contents
 */
template<class FrameType>
class FrameQueue
{
public:
    class Impl;
    using OwnerPtr = boost::shared_ptr<Impl>; ///< Keeps the pool alive.

    FrameQueue() : m_impl(boost::make_shared<Impl>()) {}

    /** Returns a frame with one reference; a reused one still has its old contents. */
    FrameType* acquire() const
    {
        FrameType* frame = m_impl->pop();
        if (frame == nullptr) {
            frame = new FrameType();
        }
        frame->owner = m_impl;
        addReference(frame);
        return frame;
    }

    /** Takes one more reference. */
    static void addReference(FrameType* frame) { frame->references.fetch_add(1, std::memory_order_relaxed); }

    /** Drops a reference; the last one returns the frame to its pool. */
    static void release(FrameType* frame)
    {
        if (frame->references.fetch_sub(1, std::memory_order_acq_rel) != 1) {
            return;
        }
        OwnerPtr owner; // dropped after the frame is in the pool: it may be the pool's last holder
        owner.swap(frame->owner);
        owner->push(frame);
    }

private:
    OwnerPtr m_impl;
};

/** The pool, which owns the frames without holders. */
template<class FrameType>
class FrameQueue<FrameType>::Impl
{
public:
    Impl() : m_frames(0) {}
    Impl(const Impl&) = delete;
    Impl& operator=(const Impl&) = delete;

    ~Impl()
    {
        while (FrameType* frame = pop()) {
            destroy(frame);
        }
    }

    /** Takes a frame out of the pool; null when it is empty. */
    FrameType* pop()
    {
        FrameType* frame = nullptr;
        return m_frames.pop(frame) ? frame : nullptr;
    }

    /** Puts a frame into the pool; frees it when there is no memory for that. */
    void push(FrameType* frame)
    {
        if (!m_frames.push(frame)) {
            destroy(frame);
        }
    }

private:
    static void destroy(FrameType* frame)
    {
        frame->owner.reset();
        FrameType::clear(*frame);
        delete frame;
    }

    boost::lockfree::queue<FrameType*> m_frames;
};

} // namespace QRNL::SDK::Utility
