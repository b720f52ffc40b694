#pragma once

#include <QString>

/**
 * Returns a name that came from another process as a message can show it: in double quotes, with a question
 * mark for each character that cannot be printed, and cut after 30 characters. Any thread.
 */
QString printableName(const QString& name);
