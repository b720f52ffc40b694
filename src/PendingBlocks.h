#pragma once

#include <QString>

#include <cstddef>
#include <memory>

/**
 * The heap blocks that are sent with commands as their user data and come back with the replies. One register
 * of the process knows the kind of each block, so that a block is read only as the kind that it was sent as.
 * A block lives until its reply, also when the plug-in's object is destroyed first and another one gets the
 * reply. A block without a reply stays in the register for as long as the library is loaded.
 *
 * Used on the plug-in's thread only; there is no lock.
 */
namespace PendingBlocks {

/** Treatment of a block that is not in the register and so belongs to the host. */
enum class Unknown
{
    Adopt, ///< Takes it as a block of the wanted kind, as the contract with the host says; it is then freed.
    Leave, ///< Leaves it to the host.
};

/** Stores a block whose command is about to be sent; the reply may come from inside the sending. */
int* add(std::unique_ptr<int> block);
/** The same for a text. */
QString* add(std::unique_ptr<QString> block);

/** Frees a block whose command was not accepted, unless a reply has taken it. */
void discard(int* block);
/** The same for a text. */
void discard(QString* block);

/**
 * Takes the block of a reply out of the register if it is a number. Returns null for a null pointer and for a
 * block of the other kind, which stays in the register.
 */
std::unique_ptr<int> takeNumber(void* userData, Unknown unknown);
/** The same for a text. */
std::unique_ptr<QString> takeText(void* userData, Unknown unknown);

/** Returns the number of blocks without a reply. */
std::size_t count();

} // namespace PendingBlocks
