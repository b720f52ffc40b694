#include "audio/SteadyClock.h"
#include "cli/InterruptFlag.h"
#include "cli/RecordFinder.h"
#include "cli/commands/CommandArguments.h"
#include "cli/commands/Commands.h"
#include "cli/commands/Table.h"
#include "client/measure/ToneProbe.h"
#include "protocol/Limits.h"
#include "protocol/Words.h"

#include <QTemporaryDir>

#include <cstdio>

namespace {

constexpr double listening = 2.0; // s after the tone
constexpr double msPerSecond = 1000.0;
constexpr double packetTime = static_cast<double>(ToneProbe::packetSamples) / ToneProbe::sampleRate; // s

/** A talk that says a tone and listens for it: without the plug-in, which has neither microphone nor sound to
 * do with it. */
class ToneTalk
{
public:
    /** @param camera its record */
    ToneTalk(PluginSession& session, const QVariantMap& camera)
        : m_session(session), m_camera(camera.value(Vocabulary::camId).toString()),
          m_isHalfDuplex(camera.value(Words::camSettings).toMap().value(Words::halfDuplex).toBool())
    {
        QObject::connect(
            &session.host(), &PluginHost::eventArrived, &m_context,
            [this](const QString& event, const QVariant& payload) { take(event, payload.toMap()); });
    }

    ExitStatus run()
    {
        const double asked = SteadyClock::now();
        PluginSession::Reply reply;
        const ExitStatus status = m_session.receive(
            m_session.sendOwn(Vocabulary::StartTalk,
                              QVariantMap{{Vocabulary::camId, m_camera}, {Vocabulary::relayPath, QString()}}),
            &reply, m_session.options().timeout + Limits::maxTalkOpeningTime);
        if (status != ExitSuccess) {
            return status;
        }
        m_token = reply.result.toMap().value(Vocabulary::talkToken).toString();
        m_opened = SteadyClock::now() - asked;
        const bool whole = sayTone();
        InterruptFlag::lower(); // for the last request; another Ctrl-C ends its wait
        m_session.nextReply(
            m_session.sendOwn(Vocabulary::StopTalk, QVariantMap{{Vocabulary::talkToken, m_token},
                                                                {Vocabulary::relayPath, QString()}}));
        if (m_lost) {
            return PluginSession::fail(ExitTalkLost, QStringLiteral("the camera was lost during the test"));
        }
        return whole ? ExitSuccess : m_session.noAnswer();
    }

    /** Prints what was found out; returns the ExitStatus. @param recordings paths of files that were kept */
    int report(bool json, const QStringList& recordings) const
    {
        const auto echo = m_probe.find();
        // With half duplex the server drops what the camera sends while the tone is said.
        const bool couldTell = m_probe.hasHeard() && !m_isHalfDuplex;
        const QString heard = echo        ? QStringLiteral("yes")
                              : couldTell ? QStringLiteral("no")
                                          : QStringLiteral("unknown");
        const double delay = echo ? echo->time - m_started : 0;
        if (json) {
            printJson({{QStringLiteral("openMs"), qRound(m_opened * msPerSecond)},
                       {QStringLiteral("toneHeard"), heard},
                       {QStringLiteral("likeness"), echo ? QVariant(echo->likeness) : QVariant()},
                       {QStringLiteral("delayMs"), echo ? QVariant(qRound(delay * msPerSecond)) : QVariant()},
                       {QStringLiteral("recordings"), recordings}});
        } else {
            std::printf("line opens        after %.0f ms\n", m_opened * msPerSecond);
            if (echo) {
                std::printf("tone comes back   after %.0f ms, likeness %.2f\n", delay * msPerSecond,
                            echo->likeness);
            } else {
                std::printf("tone comes back   %s\n",
                            couldTell ? "no: the camera is heard, but not the tone"
                            : m_isHalfDuplex
                                ? "not known: its setting --half-duplex keeps the camera from being "
                                  "heard while somebody talks"
                                : "not known: the camera sends no sound");
            }
            for (const QString& path : recordings) {
                std::printf("recording         %s\n", qUtf8Printable(path));
            }
        }
        return echo || !couldTell ? ExitSuccess : ExitNotHeard;
    }

private:
    void take(const QString& event, const QVariantMap& payload)
    {
        const QVariantMap fields = event == Words::TalkTargetLost ? payload : payload.value(event).toMap();
        if (m_token.isEmpty() || fields.value(Words::Token).toString() != m_token) {
            return;
        }
        if (event == Vocabulary::AudioReceived) {
            m_probe.hear(fields);
        } else if (event == Vocabulary::TalkDisconnected || event == Words::TalkTargetLost) {
            m_lost = true;
        }
    }

    /** Waits until some time after the start; false when the talk or the connection ends before. */
    bool waitUntil(double time)
    {
        m_session.wait([&] { return m_lost || SteadyClock::now() - m_started >= time; },
                       PluginSession::forever);
        return !m_lost && SteadyClock::now() - m_started >= time;
    }

    bool sayTone()
    {
        m_started = SteadyClock::now();
        for (int i = 0; i < ToneProbe::packets; ++i) {
            m_session.sendOwn(
                Vocabulary::TalkData,
                QVariantMap{{Vocabulary::targets, QStringLiteral("<Dest>%1</Dest>").arg(m_token)},
                            {Vocabulary::sequence, static_cast<uint>(i) + 1},
                            {Vocabulary::talkData, QString::fromLatin1(m_probe.packet(i).toBase64())}});
            if (!waitUntil((i + 1) * packetTime)) {
                return false;
            }
        }
        return waitUntil(ToneProbe::packets * packetTime + listening);
    }

    PluginSession& m_session;
    const QString m_camera; ///< Its id.
    const bool m_isHalfDuplex;
    QObject m_context;
    ToneProbe m_probe;
    QString m_token;
    double m_opened = 0;  ///< s that it took.
    double m_started = 0; ///< The tone; s of the steady clock.
    bool m_lost = false;
};

int testCamera(const CommandArguments& arguments)
{
    ClientOptions client = arguments.client();
    const QTemporaryDir unwanted; // outlives the session
    if (!arguments.isSet("output")) {
        client.simulated.recordingDirectory = unwanted.path();
        client.onvif.recordingDirectory.clear();
    }
    PluginSession session(client);
    if (const ExitStatus status = session.open(); status != ExitSuccess) {
        return status;
    }
    RecordFinder finder(session);
    const auto camera = finder.cameraRecord(arguments.word(0));
    if (!camera) {
        return finder.status();
    }
    ToneTalk talk(session, *camera);
    const ExitStatus status = talk.run();
    if (status != ExitSuccess) {
        return status;
    }
    const QStringList recordings = client.simulated.recordings->talks + client.onvif.kept->paths();
    return talk.report(arguments.json(), arguments.isSet("output") ? recordings : QStringList());
}

} // namespace

std::vector<Command> cameraTestCommands()
{
    return {
        {"cameras test",
         "CAMERA",
         "open a talk to a camera, say a tone, and listen for it",
         "Takes four seconds, without microphone and loudspeaker. Ends with 4 when the line does not open, "
         "with\n"
         "6 when it is lost, and with 10 when the camera is heard but not the tone. A camera that sends no\n"
         "sound cannot say, nor can one with --half-duplex. The talk is recorded only with --output.",
         {jsonOption},
         Command::Server,
         testCamera},
    };
}
