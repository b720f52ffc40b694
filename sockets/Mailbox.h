#pragma once

#include <algorithm>
#include <iterator>
#include <mutex>
#include <utility>
#include <vector>

/** What one thread hands to another, in its order. Whoever puts something into an empty box wakes the other.
 */
template<class T>
class Mailbox
{
public:
    /** Appends something. @return whether the box was empty, so that its reader is to be woken */
    bool put(T item)
    {
        const std::lock_guard lock(m_mutex);
        m_items.push_back(std::move(item));
        return m_items.size() == 1;
    }

    /** Appends several things, at least one. @return as put */
    bool putAll(std::vector<T> items)
    {
        const std::lock_guard lock(m_mutex);
        if (m_items.empty()) {
            m_items = std::move(items);
            return true;
        }
        std::move(items.begin(), items.end(), std::back_inserter(m_items));
        return false;
    }

    /** Empties the box. */
    std::vector<T> takeAll()
    {
        const std::lock_guard lock(m_mutex);
        return std::exchange(m_items, {});
    }

private:
    std::mutex m_mutex;
    std::vector<T> m_items;
};
