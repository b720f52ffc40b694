#pragma once

#include <QString>

/**
 * Sets a variable of this process, for its libraries and children. Unlike qputenv it keeps characters that
 * Windows' code page lacks; qEnvironmentVariable reads them back. Not thread-safe, as no environment is.
 */
void setEnvironmentVariable(const char* name, const QString& value);
