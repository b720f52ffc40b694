#pragma once

#include "server/devices/CameraBackend.h"
#include "server/devices/onvif/OnvifConfig.h"

#include <QHash>
#include <QObject>
#include <QStringList>
#include <QTimer>

/**
 * Whether cameras are there: each is asked regularly, without a login, at its device service or, where only a
 * stream is known, with OPTIONS of RTSP. The questions are spread evenly over the period; a new camera is
 * asked at once. A camera is offline until it has answered, and is not asked while a talk to it is open. Used
 * on the server's thread.
 */
class CameraPresence : public QObject
{
    Q_OBJECT

public:
    /** Has no cameras yet. */
    explicit CameraPresence(PresencePace pace);

    /** Takes the cameras. One whose address changed is a new one. */
    void setRecords(const QList<CameraRecord>& records);

    /** Returns whether a camera is there, as far as it is known. */
    bool isOnline(const QString& camera) const { return m_states.value(camera).online; }

    /** Returns the number of the camera as it is now: what is found out about an earlier one does not count.
     */
    quint64 version(const QString& camera) const { return m_states.value(camera).version; }

    /** Takes that a talk to a camera has opened. @param version of the camera at the talk's request */
    void talkOpened(const QString& camera, quint64 version);

    /** Takes the end of an open talk. */
    void talkEnded(const QString& camera, quint64 version);

    /** Takes what a talk or a picture found out: that a camera is there, or not. One that is not is asked at
     * once. */
    void noticed(const QString& camera, quint64 version, bool online);

Q_SIGNALS:
    /** A camera came or went. */
    void changed();

private:
    struct State
    {
        CameraRecord record;
        quint64 version = 0; ///< 0 for a camera that is not there.
        bool online = false;
        bool asking = false;
        int talks = 0; ///< That are open.
    };

    State* find(const QString& camera, quint64 version);
    void askNext();
    void askUrgent();
    bool ask(const QString& camera);
    void take(const QString& camera, quint64 version, bool online);
    void set(State& state, bool online);

    const PresencePace m_pace;
    QHash<QString, State> m_states; ///< By id.
    QStringList m_order;            ///< Ids, in the order in which they are asked.
    int m_next = 0;                 ///< In that order.
    QStringList m_urgent;           ///< To be asked at once; each is there once.
    int m_asking = 0;
    quint64 m_lastVersion = 0;
    QTimer m_timer;
};
