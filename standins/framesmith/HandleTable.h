#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <vector>

namespace framesmith {

/**
 * A table of objects by opaque handles. A handle is a number that is never used twice, so an invalid one is
 * recognised without an access to memory. Thread-safe.
 */
template<typename Object>
class HandleTable
{
public:
    /** @param kind 0 to 15; tables of different kinds never have a handle in common */
    explicit HandleTable(std::uintptr_t kind) : m_next(kind) {}

    /** Stores an object and returns its handle. */
    void* add(std::shared_ptr<Object> object)
    {
        const std::lock_guard lock(m_mutex);
        m_next += kinds;
        m_objects.emplace(m_next, std::move(object));
        return reinterpret_cast<void*>(m_next);
    }

    /** Returns the object of a handle; null for an invalid one. */
    std::shared_ptr<Object> find(void* handle) const
    {
        const std::lock_guard lock(m_mutex);
        const auto found = m_objects.find(reinterpret_cast<std::uintptr_t>(handle));
        return found == m_objects.end() ? nullptr : found->second;
    }

    /** Returns all objects, in the order of their handles. */
    std::vector<std::shared_ptr<Object>> all() const
    {
        const std::lock_guard lock(m_mutex);
        std::vector<std::shared_ptr<Object>> objects;
        for (const auto& [handle, object] : m_objects) {
            objects.push_back(object);
        }
        return objects;
    }

    /** Removes an object, which lives on while others hold it. Does nothing for an invalid handle. */
    void remove(void* handle)
    {
        const std::lock_guard lock(m_mutex);
        m_objects.erase(reinterpret_cast<std::uintptr_t>(handle));
    }

private:
    static constexpr std::uintptr_t kinds = 16; // tables with kinds 0 to 15 never share a handle

    mutable std::mutex m_mutex;
    std::map<std::uintptr_t, std::shared_ptr<Object>> m_objects;
    std::uintptr_t m_next;
};

} // namespace framesmith
