#pragma once

#include <QString>

/**
 * Sets a variable of this process, for its libraries and children. Unlike qputenv it keeps characters that
 * the code page of Windows does not have; qEnvironmentVariable reads them back. Not thread-safe.
 */
void setEnvironmentVariable(const char* name, const QString& value);
