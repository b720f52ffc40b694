#pragma once

#include <QByteArray>
#include <QObject>
#include <QString>

/** One picture of a video. */
struct VideoUnit
{
    QByteArray bytes;        ///< An access unit of H.264 with start codes (ITU-T H.264, annex B).
    bool isKeyFrame = false; ///< Whether it needs no other one; it begins with its parameter sets then.
    int position = 0;        ///< Since the first one, ms.
};

/**
 * The video of one camera, from the request to its end:
 *
 *   Opening -- showed --> Open -- lost --> ended
 *      '------ refused --> ended
 *
 * All calls and signals are on the server's thread. The first signal comes after the call that made the video
 * has returned; its end, by the destructor, waits for nothing.
 */
class CameraVideo : public QObject
{
    Q_OBJECT

Q_SIGNALS:
    /** The next picture; a key frame at first, and wherever pictures before it were left out. */
    void showed(const VideoUnit& unit);

    /** There is no video. @param returnCode see ReturnCode @param reason for people */
    void refused(const QString& returnCode, const QString& reason);

    /** The open video is gone. @param reason for people */
    void lost(const QString& reason);
};
