#pragma once

#include <algorithm>
#include <memory>
#include <vector>

/**
 * The heap blocks that travel with commands as their user data and come back with the replies. A block
 * belongs to the handler of its reply; what no reply has brought back goes with this object.
 */
template<class T>
class PendingBlocks
{
public:
    /** Keeps a block whose command is about to be sent; its reply may come from inside of the sending. */
    T* add(std::unique_ptr<T> block)
    {
        m_blocks.push_back(std::move(block));
        return m_blocks.back().get();
    }

    /** Frees a block whose command was not accepted, unless a reply has taken it all the same. */
    void discard(T* pointer)
    {
        const auto block = find(pointer);
        if (block != m_blocks.end()) {
            m_blocks.erase(block);
        }
    }

    /** The block of a reply; null for a reply without one. */
    std::unique_ptr<T> take(void* userData)
    {
        auto* pointer = static_cast<T*>(userData);
        const auto block = find(pointer);
        if (block == m_blocks.end()) {
            return std::unique_ptr<T>(pointer);
        }
        std::unique_ptr<T> taken = std::move(*block);
        m_blocks.erase(block);
        return taken;
    }

private:
    auto find(const T* pointer)
    {
        return std::find_if(m_blocks.begin(), m_blocks.end(),
                            [pointer](const auto& block) { return block.get() == pointer; });
    }

    std::vector<std::unique_ptr<T>> m_blocks;
};
