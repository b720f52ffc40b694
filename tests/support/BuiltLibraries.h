#pragma once

#include <QDir>
#include <QProcessEnvironment>
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

/** This program's environment for a child that looks for libraries in @p folder instead of in the build's
 * own. */
inline QProcessEnvironment environmentFor(const QString& folder)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
#ifdef Q_OS_WIN
    QStringList folders{QDir::toNativeSeparators(folder)};
    const QDir own(QStringLiteral(PLUGIN_DIR));
    for (const QString& other : environment.value(QStringLiteral("PATH")).split(QLatin1Char(';'))) {
        if (QDir(other) != own) {
            folders.append(other);
        }
    }
    environment.insert(QStringLiteral("PATH"), folders.join(QLatin1Char(';')));
#else
    environment.insert(QStringLiteral("LD_LIBRARY_PATH"), folder);
#endif
    return environment;
}

} // namespace BuiltLibraries
