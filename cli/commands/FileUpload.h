#pragma once

#include "cli/PluginSession.h"

/** Returns whether a path is that of a file that can be read; prints an error when it is not. */
bool isUploadable(const QString& path);

/**
 * Sends a file to the server and waits until that has stored it. Prints what it does, and errors, to stderr.
 *
 * @param session open
 * @param id      receives the id that the server gave it
 */
ExitStatus uploadFile(PluginSession& session, const QString& path, int* id);
