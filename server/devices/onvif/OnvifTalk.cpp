#include "server/devices/onvif/OnvifTalk.h"

#include "audio/G711.h"
#include "audio/TalkPacketDecoder.h"
#include "server/devices/onvif/LineThreads.h"
#include "server/devices/onvif/RtspQuestion.h"

#include <QPointer>
#include <QSslSocket>
#include <QUrl>

#include <algorithm>
#include <cstdlib>

namespace {

constexpr std::chrono::milliseconds hangover{300}; // after the last loud packet
constexpr int loudness = 100;   // peak of 8192 for a packet in which somebody talks, -38 dBFS
constexpr int maxAnswer = 4096; // bytes of an answer that are looked at

bool isLoud(const QByteArray& muLaw)
{
    return std::any_of(muLaw.begin(), muLaw.end(),
                       [](char byte) { return std::abs(G711::expandMuLaw(byte)) > loudness; });
}

} // namespace

OnvifTalk::OnvifTalk(const CameraRecord& camera, const OnvifConfig& config, LineThreads& threads)
    : m_camera(camera),
      m_line(std::make_shared<OnvifLine>(camera, config, static_cast<LineListener&>(*this))),
      m_lastLoud(std::chrono::steady_clock::time_point())
{
    connect(this, &OnvifTalk::cameraIsSilent, this, &OnvifTalk::ask, Qt::QueuedConnection);
    threads.reserve(m_line); // others may ask in the same turn of the event loop
    // Not before the caller has connected to the signals: a line may be refused at once, on its own thread.
    QMetaObject::invokeMethod(
        this,
        [this, &threads] {
            if (!threads.start(m_line)) {
                const QPointer<OnvifTalk> guard(this); // the receiver may delete the talk
                Q_EMIT refused(LineRefusal::noRoom().returnCode, LineRefusal::noRoom().reason);
                if (guard) {
                    Q_EMIT closed();
                }
            }
        },
        Qt::QueuedConnection);
}

OnvifTalk::~OnvifTalk()
{
    m_line->forgetListener();
    m_line->close();
}

bool OnvifTalk::hear(const QByteArray& packet)
{
    const auto talk = TalkPacketDecoder::bitstreamOf(packet);
    if (!talk) {
        return false;
    }
    if (m_camera.settings.halfDuplex && isLoud(talk->muLaw)) {
        m_lastLoud = std::chrono::steady_clock::now();
    }
    m_line->say(talk->position, talk->muLaw);
    return true;
}

void OnvifTalk::close()
{
    m_line->close();
}

void OnvifTalk::lineOpened()
{
    Q_EMIT opened();
}

void OnvifTalk::lineRefused(const QString& returnCode, const QString& reason)
{
    Q_EMIT refused(returnCode, reason);
}

void OnvifTalk::lineLost(const QString& reason)
{
    Q_EMIT lost(reason);
}

void OnvifTalk::lineSpoke(const VoicePacket& packet)
{
    if (std::chrono::steady_clock::now() - m_lastLoud.load() >= hangover) {
        Q_EMIT spoke(packet);
    }
}

void OnvifTalk::lineAsks()
{
    Q_EMIT cameraIsSilent(QPrivateSignal());
}

void OnvifTalk::lineClosed()
{
    Q_EMIT closed();
}

/** Asks with OPTIONS on a connection of its own, which any RTSP server answers (RFC 2326, clause 10.1). */
void OnvifTalk::ask()
{
    if (m_questions && m_questions->state() == QAbstractSocket::ConnectedState) {
        writeQuestion();
        return;
    }
    const QUrl address(m_camera.address);
    m_questions = std::make_unique<QSslSocket>();
    QSslSocket* socket = m_questions.get();
    socket->setPeerVerifyMode(QSslSocket::VerifyNone); // nothing secret is said or believed
    socket->setReadBufferSize(maxAnswer);
    connect(socket, &QIODevice::readyRead, this, [this, socket] {
        const QByteArray answer = socket->read(maxAnswer);
        if (answer.startsWith("RTSP/")) {
            m_line->answered();
        } else {
            socket->abort(); // or a flood of anything would be read
        }
    });
    const auto port = static_cast<quint16>(address.port(defaultRtspPort(address.scheme())));
    if (address.scheme() == QLatin1String("rtsps")) {
        connect(socket, &QSslSocket::encrypted, this, &OnvifTalk::writeQuestion);
        socket->connectToHostEncrypted(address.host(), port);
    } else {
        connect(socket, &QAbstractSocket::connected, this, &OnvifTalk::writeQuestion);
        socket->connectToHost(address.host(), port);
    }
}

void OnvifTalk::writeQuestion()
{
    m_questions->write(RtspQuestion::text(m_camera.address, ++m_questionNumber));
}
