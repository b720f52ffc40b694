#pragma once

#include "system/WorkerThread.h"

#include <QObject>
#include <QSet>
#include <QTimer>
#include <QVariant>

#include <memory>

class PluginHost;
class RequestTimeouts;
class ToneProbe;

/**
 * Tests a camera: opens a talk to it, says a tone, listens for it, and closes the talk. By requests of the
 * host's own, since the plug-in says what the microphone hears. One at a time. Used on the window's thread.
 *
 *   start --> asked --> open: tone --> listening --> evaluated on a thread --> tested
 *                '--> refused, no answer '--> lost --------------------------> tested
 */
class CameraTest : public QObject
{
    Q_OBJECT
    /** The id of the camera that is tested; empty for none. */
    Q_PROPERTY(QString camera READ camera NOTIFY cameraChanged)

public:
    /** @param watch gets to know the request for the talk @param listening after the tone, ms */
    CameraTest(PluginHost& host, RequestTimeouts& watch, int listening = 2000);
    ~CameraTest() override;

    /** Returns the property camera. */
    QString camera() const { return m_camera; }

    /**
     * Starts a test; tested follows.
     *
     * @param isHalfDuplex whether the camera is not heard while somebody talks, as its settings say
     * @return false without a connection, and while one runs
     */
    Q_INVOKABLE bool start(const QString& camera, bool isHalfDuplex = false);

    /** Ends a test without a result. Does nothing when none runs. */
    Q_INVOKABLE void cancel();

    /** Forgets what is open: the connection is gone, and the talk with it. */
    void forgetConnection();

public Q_SLOTS:
    /** Takes notice of a reply of the host. */
    void replyArrived(const QString& command, const QString& returnCode, const QString& errorText,
                      quint64 request, const QVariant& result);
    /** Takes notice of an event. */
    void eventArrived(const QString& event, const QVariant& payload);

Q_SIGNALS:
    /** Emitted when camera has changed. */
    void cameraChanged();
    /** Emitted when a test has ended by itself. @param text its result, for people */
    void tested(const QString& camera, bool good, const QString& text);

private:
    void timedOut(quint64 request);
    void say();
    void evaluate();
    void evaluated(quint64 test, bool heard, int delay);
    void closeTalk(const QString& token);
    void end();
    void finish(bool good, const QString& text);

    PluginHost& m_host;
    RequestTimeouts& m_watch;
    WorkerThread m_thread;
    QString m_camera;
    bool m_isHalfDuplex = false; ///< The camera.
    quint64 m_test = 0;          ///< Rises with each end: what belongs to an earlier test is dropped.
    quint64 m_request = 0;       ///< For the talk, while it is open.
    QSet<quint64> m_given;       ///< Requests that were given up; a talk that opens late is closed.
    QString m_token;             ///< Of the open talk; empty without one.
    std::shared_ptr<ToneProbe> m_probe;
    int m_sent = 0;       ///< Packets of the tone.
    double m_started = 0; ///< The tone, s of the steady clock.
    QTimer m_packets;
    QTimer m_listening;
};
