#pragma once

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <mutex>
#include <vector>

namespace framesmith {

/** A queue of samples between the thread that records them and the thread that reads them. */
class SampleQueue
{
public:
    /** @param capacity the most samples that the queue holds */
    explicit SampleQueue(std::size_t capacity) : m_capacity(capacity) {}

    /** Appends samples; drops the oldest ones of a full queue. */
    void push(const std::vector<std::int16_t>& samples)
    {
        const std::lock_guard lock(m_mutex);
        m_samples.insert(m_samples.end(), samples.begin(), samples.end());
        if (m_samples.size() > m_capacity) {
            const auto excess = static_cast<std::ptrdiff_t>(m_samples.size() - m_capacity);
            m_samples.erase(m_samples.begin(), m_samples.begin() + excess);
        }
        m_condition.notify_one();
    }

    /** Waits for @p count samples and removes them from the queue; returns false once it is closed. */
    bool pop(std::int16_t* samples, std::size_t count)
    {
        std::unique_lock lock(m_mutex);
        m_condition.wait(lock, [&] { return m_closed || m_samples.size() >= count; });
        if (m_closed) {
            return false;
        }
        const auto end = m_samples.begin() + static_cast<std::ptrdiff_t>(count);
        std::copy(m_samples.begin(), end, samples);
        m_samples.erase(m_samples.begin(), end);
        return true;
    }

    /** Ends a waiting pop, and all later ones. */
    void close()
    {
        const std::lock_guard lock(m_mutex);
        m_closed = true;
        m_condition.notify_all();
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_condition;
    std::deque<std::int16_t> m_samples;
    std::size_t m_capacity;
    bool m_closed = false;
};

} // namespace framesmith
