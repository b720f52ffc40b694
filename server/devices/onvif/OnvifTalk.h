#pragma once

#include "server/devices/onvif/OnvifLine.h"

#include <QAbstractSocket>

#include <memory>

class QSslSocket;
class LineThreads;

/** A talk with an ONVIF camera: an OnvifLine on a thread of its own, which may outlive the talk. */
class OnvifTalk : public DeviceTalk, private LineListener
{
    Q_OBJECT

public:
    /** Starts to open the line. @param threads outlive the talk, and run the line */
    OnvifTalk(const CameraRecord& camera, const OnvifConfig& config, LineThreads& threads);
    ~OnvifTalk() override;

    bool hear(const QByteArray& packet) override;
    void close() override;

Q_SIGNALS:
    /** The line asks; for the talk itself. */
    void cameraIsSilent(QPrivateSignal signal);

private:
    void lineOpened() override;
    void lineRefused(const QString& returnCode, const QString& reason) override;
    void lineLost(const QString& reason) override;
    void lineSpoke(const VoicePacket& packet) override;
    void lineAsks() override;
    void lineClosed() override;
    void ask();
    void writeQuestion();

    CameraRecord m_camera;
    std::shared_ptr<OnvifLine> m_line;
    std::atomic<std::chrono::steady_clock::time_point> m_lastLoud; ///< Somebody talked; for half duplex.
    std::unique_ptr<QSslSocket> m_questions; ///< The connection for questions, once there was one.
    int m_questionNumber = 0;
};
