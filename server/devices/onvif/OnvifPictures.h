#pragma once

#include "server/devices/CameraBackend.h"
#include "server/devices/onvif/OnvifConfig.h"

#include <QElapsedTimer>
#include <QHash>
#include <QObject>
#include <QUrl>

/**
 * Stills of the cameras of the records, for a back end. The address of a still is asked for once (ONVIF
 * GetSnapshotUri), and again after it failed. All calls are on the server's thread.
 */
class OnvifPictures : public QObject
{
public:
    /** Has no cameras until it is given records. */
    explicit OnvifPictures(const OnvifConfig& config);

    /** Takes the records of the back end. */
    void setRecords(const QList<CameraRecord>& records);

    /** Asks a camera for a still; false for one of no record. One question to a camera at a time. */
    bool ask(const QString& camera, const CameraBackend::TakePicture& take);

private:
    /** What is known of a camera. */
    struct Known
    {
        CameraRecord record;
        QUrl still;              ///< Its address; empty when it is not known.
        CameraPicture refused{}; ///< The last refusal.
        qint64 refusedUntil = 0; ///< By m_clock: that refusal is repeated until then.
    };

    void askAddress(const CameraRecord& record, const CameraBackend::TakePicture& take);
    void askStill(const CameraRecord& record, const QUrl& url, const CameraBackend::TakePicture& take);
    void finish(const CameraRecord& record, const CameraPicture& picture,
                const CameraBackend::TakePicture& take);

    OnvifPictureTimes m_times;
    int m_servicePort;
    QElapsedTimer m_clock;
    QHash<QString, Known> m_cameras; ///< By id.
};
