#pragma once

#include <QString>

#include <cstddef>
#include <memory>

/**
 * The heap blocks that travel with commands as their user data and come back with the replies. There is one
 * register of them in the process, which knows the kind of each block: what a reply brings back is read only
 * as what it was sent as. A block lives until its reply, also when the plug-in's object has been destroyed in
 * the meantime and another one gets the reply. What no reply brings back stays, reachable, to the end of the
 * process: one block for each such request of a user.
 *
 * Only used on the plug-in's thread; there is no lock.
 */
namespace PendingBlocks {

/** What becomes of a block that is not in the register, and so is the host's own. */
enum class Unknown
{
    Adopt, ///< It is taken to be of the wanted kind, as the contract with the host has it, and freed.
    Leave,
};

/** Keeps a block whose command is about to be sent; its reply may come from inside the sending. */
int* add(std::unique_ptr<int> block);
QString* add(std::unique_ptr<QString> block);

/** Frees a block whose command was not accepted, unless a reply has taken it all the same. */
void discard(int* block);
void discard(QString* block);

/** The block of a reply if it is of this kind. Null for a null pointer and for a block of the other kind,
 * which stays in the register. */
std::unique_ptr<int> takeNumber(void* userData, Unknown unknown);
std::unique_ptr<QString> takeText(void* userData, Unknown unknown);

/** How many blocks wait for their replies. */
std::size_t count();

} // namespace PendingBlocks
