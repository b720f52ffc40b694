#include "system/EnvironmentVariable.h"

#ifdef _WIN32
#include <cstdlib>
#else
#include <QFile>
#endif

void setEnvironmentVariable(const char* name, const QString& value)
{
#ifdef _WIN32
    _wputenv_s(QString::fromLatin1(name).toStdWString().c_str(), value.toStdWString().c_str());
#else
    qputenv(name, QFile::encodeName(value));
#endif
}
