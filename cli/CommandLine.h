#pragma once

#include <QStringList>

/** Runs the command in the arguments, the program's name first; returns its ExitStatus. */
int runCommandLine(const QStringList& arguments);
