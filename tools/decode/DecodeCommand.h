#pragma once

#include <QStringList>

/** Runs voicedesk-decode with its arguments (the program's name first); returns its exit status. */
int runDecodeCommand(const QStringList& arguments);
