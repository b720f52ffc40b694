#include "src/PendingBlocks.h"

#include "lifetime/NeverDestroyed.h"

#include <map>

namespace {

enum class Kind
{
    Number,
    Text,
};

/** The blocks by their addresses, for all plug-in objects of the process, as a reply may come to a later one.
 * The register lasts as long as the library: a library that was unloaded and loaded again begins with an
 * empty one, and a block from before counts as the host's own. */
std::map<const void*, Kind>& blocks()
{
    static NeverDestroyed<std::map<const void*, Kind>> blocks;
    return blocks.value;
}

template<class T>
T* add(std::unique_ptr<T> block, Kind kind)
{
    blocks().emplace(block.get(), kind);
    return block.release();
}

template<class T>
std::unique_ptr<T> take(void* userData, Kind kind, PendingBlocks::Unknown unknown)
{
    const auto found = blocks().find(userData);
    if (found == blocks().end()) {
        return std::unique_ptr<T>(unknown == PendingBlocks::Unknown::Adopt ? static_cast<T*>(userData)
                                                                           : nullptr);
    }
    if (found->second != kind) {
        return nullptr;
    }
    blocks().erase(found);
    return std::unique_ptr<T>(static_cast<T*>(userData));
}

} // namespace

namespace PendingBlocks {

int* add(std::unique_ptr<int> block)
{
    return ::add(std::move(block), Kind::Number);
}

QString* add(std::unique_ptr<QString> block)
{
    return ::add(std::move(block), Kind::Text);
}

void discard(int* block)
{
    takeNumber(block, Unknown::Leave);
}

void discard(QString* block)
{
    takeText(block, Unknown::Leave);
}

std::unique_ptr<int> takeNumber(void* userData, Unknown unknown)
{
    return take<int>(userData, Kind::Number, unknown);
}

std::unique_ptr<QString> takeText(void* userData, Unknown unknown)
{
    return take<QString>(userData, Kind::Text, unknown);
}

std::size_t count()
{
    return blocks().size();
}

} // namespace PendingBlocks
