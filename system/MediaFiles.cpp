#include "system/MediaFiles.h"

#include <QFile>

namespace MediaFiles {

#ifdef _WIN32

SNDFILE* open(const QString& path, int mode, SF_INFO* info)
{
    return sf_wchar_open(path.toStdWString().c_str(), mode, info);
}

QByteArray ffmpegName(const QString& path)
{
    return path.toUtf8();
}

#else

SNDFILE* open(const QString& path, int mode, SF_INFO* info)
{
    return sf_open(QFile::encodeName(path).constData(), mode, info);
}

QByteArray ffmpegName(const QString& path)
{
    return QFile::encodeName(path);
}

#endif

double duration(const QString& path)
{
    SF_INFO info{};
    SNDFILE* file = open(path, SFM_READ, &info);
    if (file == nullptr) {
        return -1;
    }
    sf_close(file);
    return static_cast<double>(info.frames) / info.samplerate;
}

} // namespace MediaFiles
