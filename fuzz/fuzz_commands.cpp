// Any commands, one after another, into the reference server, which has cameras, a speaker and a file.

#include "fuzz/VariantTree.h"
#include "server/RecordingServer.h"
#include "server/core/ServerSession.h"
#include "server/devices/simulated/SimulatedDevices.h"

#include <QCoreApplication>
#include <QFile>
#include <QTemporaryDir>

namespace {

namespace V = Vocabulary;

constexpr int mostCommands = 100;

/** The server of all inputs: what one leaves behind, the next one finds. */
struct Place
{
    QTemporaryDir recordings;
    RecordingServer server;

    Place() : server(config(recordings.path()))
    {
        ServerSession session(server);
        session.submit(V::AddIPAudio,
                       QVariantMap{{V::deviceName, QStringLiteral("Gate")},
                                   {V::ip, QStringLiteral("10.0.0.5")},
                                   {V::port, 554}},
                       nullptr);
        QFile file(QStringLiteral(ANNOUNCEMENT_WAV));
        if (!file.open(QIODevice::ReadOnly)) {
            std::abort();
        }
        session.submit(V::UploadFile,
                       QVariantMap{{Words::content, file.read(8044).toBase64()},
                                   {Words::fileName, QStringLiteral("announcement.wav")}},
                       nullptr);
    }

    static ServerConfig config(const QString& recordings)
    {
        SimulatedConfig simulated;
        simulated.cameras = defaultCameras();
        simulated.recordingDirectory = recordings;
        ServerConfig config;
        config.devices = simulatedDevices(simulated);
        return config;
    }
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static int argc = 1;
    static char name[] = "fuzz";
    static char* argv[] = {name, nullptr};
    static const QCoreApplication application(argc, argv);
    static Place place;
    FuzzedDataProvider input(data, size);
    ServerSession session(place.server);
    QString talkToken; // of the talk that was opened last
    QObject::connect(&session, &ServerSession::replied, &session,
                     [&talkToken](const QString&, void*, const ServerReply& reply) {
                         const QString token = reply.result.toMap().value(V::talkToken).toString();
                         talkToken = token.isEmpty() ? talkToken : token;
                     });
    for (int commands = 0; commands < mostCommands && input.remaining_bytes() > 0; ++commands) {
        switch (input.ConsumeIntegralInRange(0, 7)) {
        case 0:
            session.submit(V::StartTalk, QVariantMap{{V::camId, QStringLiteral("camera-1")}}, nullptr);
            QCoreApplication::sendPostedEvents();
            break;
        case 1:
            session.submit(
                V::TalkData,
                QVariantMap{
                    {V::targets, QStringLiteral("<Dest>%1</Dest>").arg(talkToken)},
                    {V::sequence, input.ConsumeIntegral<unsigned>()},
                    {V::talkData,
                     QString::fromLatin1(
                         QByteArray::fromStdString(input.ConsumeRandomLengthString(200)).toBase64())}},
                nullptr);
            break;
        default:
            session.submit(*input.PickValueInArray(Words::commands), variantTree(input), nullptr);
        }
    }
    QCoreApplication::processEvents();
    return 0;
}
