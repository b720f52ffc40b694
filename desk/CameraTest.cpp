#include "desk/CameraTest.h"

#include "audio/SteadyClock.h"
#include "client/PluginHost.h"
#include "client/measure/ToneProbe.h"
#include "desk/ErrorMessages.h"
#include "desk/RequestTimeouts.h"
#include "protocol/ReturnCode.h"
#include "protocol/Words.h"

#include <utility>

namespace {

constexpr int msPerSecond = 1000;
constexpr int packetTime = ToneProbe::packetSamples * msPerSecond / ToneProbe::sampleRate; // ms

} // namespace

CameraTest::CameraTest(PluginHost& host, RequestTimeouts& watch, int listening) : m_host(host), m_watch(watch)
{
    m_packets.setTimerType(Qt::PreciseTimer);
    m_packets.setInterval(packetTime);
    connect(&m_packets, &QTimer::timeout, this, &CameraTest::say);
    m_listening.setSingleShot(true);
    m_listening.setInterval(listening);
    connect(&m_listening, &QTimer::timeout, this, &CameraTest::evaluate);
    connect(&m_watch, &RequestTimeouts::timedOut, this, &CameraTest::timedOut);
}

CameraTest::~CameraTest() = default;

bool CameraTest::start(const QString& camera, bool isHalfDuplex)
{
    if (!m_camera.isEmpty() || camera.isEmpty()) {
        return false;
    }
    const QVariantMap payload{{Vocabulary::camId, camera}, {Vocabulary::relayPath, QString()}};
    const quint64 request = m_host.sendOwn(Vocabulary::StartTalk, payload);
    m_watch.commandSent(Vocabulary::StartTalk, payload, request != 0, request);
    if (request == 0) {
        return false;
    }
    m_request = request;
    m_camera = camera;
    m_isHalfDuplex = isHalfDuplex;
    Q_EMIT cameraChanged();
    return true;
}

void CameraTest::replyArrived(const QString& command, const QString& returnCode, const QString& errorText,
                              quint64 request, const QVariant& result)
{
    if (command != Vocabulary::StartTalk || request == 0) {
        return;
    }
    const bool success = returnCode == ReturnCode::success;
    const QString token = result.toMap().value(Vocabulary::talkToken).toString();
    if (m_given.remove(request) && success) {
        closeTalk(token); // nobody waits for it any more
    }
    if (request != m_request) {
        return;
    }
    m_request = 0;
    if (!success || token.isEmpty()) {
        finish(false, tr("The line does not open: %1").arg(ErrorMessages::withDetail(returnCode, errorText)));
        return;
    }
    m_token = token;
    m_probe = std::make_shared<ToneProbe>();
    m_sent = 0;
    m_started = SteadyClock::now();
    m_packets.start();
    say();
}

/** Sends the next packet of the tone. */
void CameraTest::say()
{
    const QByteArray packet = m_probe->packet(m_sent++);
    m_host.sendOwn(Vocabulary::TalkData,
                   QVariantMap{{Vocabulary::targets, QStringLiteral("<Dest>%1</Dest>").arg(m_token)},
                               {Vocabulary::sequence, static_cast<uint>(m_sent)},
                               {Vocabulary::talkData, QString::fromLatin1(packet.toBase64())}});
    if (m_sent == ToneProbe::packets) {
        m_packets.stop();
        m_listening.start();
    }
}

void CameraTest::eventArrived(const QString& event, const QVariant& payload)
{
    const QVariantMap map = payload.toMap();
    const QVariantMap fields = event == Words::TalkTargetLost ? map : map.value(event).toMap();
    if (m_token.isEmpty() || fields.value(Words::Token).toString() != m_token) {
        return;
    }
    if (event == Vocabulary::AudioReceived) {
        m_probe->hear(fields);
    } else if (event == Vocabulary::TalkDisconnected || event == Words::TalkTargetLost) {
        finish(false, tr("The line opens, but the camera was lost during the test."));
    }
}

/** Closes the talk, and looks for the tone in what was heard. */
void CameraTest::evaluate()
{
    closeTalk(std::exchange(m_token, QString()));
    m_thread.run([this, probe = m_probe, test = m_test, started = m_started]() -> WorkerThread::Report {
        const auto echo = probe->find();
        const int delay = echo ? static_cast<int>((echo->time - started) * msPerSecond) : 0;
        return [this, test, heard = echo.has_value(), delay] { evaluated(test, heard, delay); };
    });
}

void CameraTest::evaluated(quint64 test, bool heard, int delay)
{
    if (test != m_test) {
        return;
    }
    if (heard) {
        finish(true, tr("The line opens, and the tone comes back after %1 ms.").arg(delay));
    } else if (m_isHalfDuplex) {
        // The server drops what the camera sends while the tone is said.
        finish(true,
               tr("The line opens. The camera is not heard while somebody talks, as its settings say, so "
                  "nobody knows whether it played the tone."));
    } else if (m_probe->hasHeard()) {
        finish(false, tr("The line opens. The camera is heard, but not the tone."));
    } else {
        finish(true,
               tr("The line opens. The camera sends no sound, so nobody knows whether it played the tone."));
    }
}

void CameraTest::timedOut(quint64 request)
{
    if (m_request != 0 && request == m_request) {
        m_given.insert(std::exchange(m_request, 0));
        finish(false, tr("The line does not open: no answer"));
    }
}

void CameraTest::cancel()
{
    if (!m_camera.isEmpty()) {
        if (m_request != 0) {
            m_given.insert(m_request);
        }
        end();
    }
}

void CameraTest::forgetConnection()
{
    m_token.clear();
    m_request = 0;
    m_given.clear();
    end();
}

void CameraTest::closeTalk(const QString& token)
{
    m_host.sendOwn(Vocabulary::StopTalk,
                   QVariantMap{{Vocabulary::talkToken, token}, {Vocabulary::relayPath, QString()}});
}

/** Closes what a test has opened. */
void CameraTest::end()
{
    ++m_test;
    m_request = 0;
    m_packets.stop();
    m_listening.stop();
    if (!m_token.isEmpty()) {
        closeTalk(std::exchange(m_token, QString()));
    }
    if (!m_camera.isEmpty()) {
        m_camera.clear();
        Q_EMIT cameraChanged();
    }
}

void CameraTest::finish(bool good, const QString& text)
{
    const QString camera = m_camera;
    end();
    Q_EMIT tested(camera, good, text);
}
