#pragma once

#include <QStringList>

/** Reads the arguments of voicedesk (the program's name first), runs the command, gives the exit status. */
int runCommandLine(const QStringList& arguments);
