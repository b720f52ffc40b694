#pragma once

#include <QByteArray>
#include <QString>

#include <sndfile.h>

/** Sound files of any name, for libraries that take names in the system's own encoding. */
namespace MediaFiles {

/**
 * Calls sf_open for a path of any characters.
 *
 * @return null on failure; sf_strerror(nullptr) then returns the reason
 */
SNDFILE* open(const QString& path, int mode, SF_INFO* info);

/** Returns the length of a sound file in seconds; negative when it cannot be read. */
double duration(const QString& path);

/** Returns a path in the encoding that FFmpeg expects. */
QByteArray ffmpegName(const QString& path);

} // namespace MediaFiles
