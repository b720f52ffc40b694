#pragma once

/** How many files and sockets this process may have open at a time. */
namespace OpenFiles {

/** Raises the limit as far as the system lets a process do it by itself. Does nothing on Windows. */
void raiseLimit();

/** Returns the limit; a large number where there is none. */
int limit();

} // namespace OpenFiles
