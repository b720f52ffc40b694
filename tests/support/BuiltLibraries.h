#pragma once

#include <QString>

/** The project's own shared libraries, where this build has put them. */
namespace BuiltLibraries {

/** The name of a library's file. */
inline QString fileName(const char* library)
{
#ifdef Q_OS_WIN
    return QString::fromLatin1(library) + QStringLiteral(".dll");
#else
    return QStringLiteral("lib") + QString::fromLatin1(library) + QStringLiteral(".so");
#endif
}

/** The path of a library. */
inline QString path(const char* library)
{
    return QStringLiteral(PLUGIN_DIR "/") + fileName(library);
}

} // namespace BuiltLibraries
