#pragma once

#include <QByteArray>
#include <QString>

#include <sndfile.h>

/** Sound files of any name, for libraries that take names in the bytes of the system. */
namespace MediaFiles {

/** sf_open for a path of any characters. @return null on failure; sf_strerror(nullptr) tells why */
SNDFILE* open(const QString& path, int mode, SF_INFO* info);

/** Length of a sound file in seconds; negative when it cannot be read. */
double duration(const QString& path);

/** A path as FFmpeg takes it. */
QByteArray ffmpegName(const QString& path);

} // namespace MediaFiles
