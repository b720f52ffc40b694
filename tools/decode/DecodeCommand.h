#pragma once

#include <QStringList>

/**
 * Runs voicedesk-decode: reads a packet dump, decodes its packets and writes their sound, and prints to
 * stderr what fails. Main thread.
 *
 * @param arguments the program's name first
 * @return the exit status that the help lists, 0 to 3
 */
int runDecodeCommand(const QStringList& arguments);
