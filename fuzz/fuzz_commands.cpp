// Any commands of the table, one after another, into the reference server, which has cameras, open talks and
// a record of each kind.

#include "fuzz/VariantTree.h"
#include "protocol/ScheduleRule.h"
#include "server/RecordingServer.h"
#include "server/core/ServerSession.h"
#include "server/devices/simulated/SimulatedDevices.h"

#include <QCoreApplication>
#include <QFile>
#include <QTemporaryDir>

#include <algorithm>
#include <optional>

namespace {

namespace V = Vocabulary;
namespace W = Words;

constexpr int maxCommands = 100;
constexpr int maxRecords = 50; // of a kind, before all begins anew

/** A server with cameras, and a record of each kind, of id 1. */
class Place
{
public:
    Place() : m_server(config(m_recordings.path()))
    {
        ServerSession session(m_server);
        QFile file(QStringLiteral(ANNOUNCEMENT_WAV));
        if (!file.open(QIODevice::ReadOnly)) {
            std::abort();
        }
        const std::pair<QString, QVariantMap> records[] = {
            {V::AddIPAudio,
             {{V::deviceName, QStringLiteral("Gate")}, {V::ip, QStringLiteral("10.0.0.5")}, {V::port, 554}}},
            {V::UploadFile,
             {{W::content, file.read(8044).toBase64()}, {W::filename, QStringLiteral("announcement.wav")}}},
            {V::AddNetworkAudioGroup,
             {{V::groupName, QStringLiteral("Yard")}, {V::networkAudioIDList, QStringLiteral("1")}}},
            {V::AddNetworkAudioSchedule,
             {{V::scheduleName, QStringLiteral("Morning")},
              {V::enableSchedule, true},
              {V::scheduleType, ScheduleRule::Daily},
              {V::scheduleStartTime, QStringLiteral("2026-12-01T08:00:00")},
              {V::audioID, 1},
              {V::groupIDList, QStringLiteral("1")}}},
        };
        for (const auto& [command, record] : records) {
            if (m_server.execute(session, command, record, 1)->returnCode != ReturnCode::success) {
                std::abort();
            }
        }
        if (!isWhole()) {
            std::abort();
        }
    }

    RecordingServer& server() { return m_server; }

    /** Whether the first records are there, and not too many others. */
    bool isWhole()
    {
        ServerSession session(m_server);
        const std::pair<QString, QString> lists[] = {{V::RetrieveIPAudioModel, V::deviceID},
                                                     {V::GetAudioFile, V::audioID},
                                                     {V::GetNetworkAudioGroup, V::groupID},
                                                     {V::GetNetworkAudioSchedule, V::scheduleID}};
        return std::all_of(std::begin(lists), std::end(lists), [&](const auto& list) {
            const QVariantList records =
                m_server.execute(session, list.first, QVariant(), 1)->result.toList();
            return !records.isEmpty() && records.size() <= maxRecords &&
                   records.first().toMap().value(list.second) == 1;
        });
    }

private:
    static ServerConfig config(const QString& recordings)
    {
        SimulatedConfig simulated;
        simulated.cameras = defaultCameras();
        simulated.recordingDirectory = recordings;
        ServerConfig config;
        config.devices = simulatedDevices(simulated);
        return config;
    }

    QTemporaryDir m_recordings;
    RecordingServer m_server;
};

/** Ends the program at a success whose payload is not what the table says. */
void checkAnswer(const QString& command, const ServerReply& reply)
{
    const CommandTable::Row* row = CommandTable::find(command);
    if (reply.returnCode != ReturnCode::success) {
        return;
    }
    const int types[] = {QMetaType::UnknownType, QMetaType::Int, QMetaType::QString, QMetaType::QVariantMap,
                         QMetaType::QVariantList};
    if (row == nullptr || reply.result.userType() != types[row->answer.kind]) {
        std::abort();
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static int argc = 1;
    static char name[] = "fuzz";
    static char* argv[] = {name, nullptr};
    static const QCoreApplication application(argc, argv);
    static std::optional<Place> place(std::in_place); // made here, so that Qt's list of databases outlives it
    if (!place->isWhole()) {
        place.reset();
        place.emplace();
    }
    FuzzedDataProvider input(data, size);
    ServerSession session(place->server());
    QString targets; // of the talks that were opened so far
    QObject::connect(&session, &ServerSession::replied, &session,
                     [&targets](const QString& command, quint64, const ServerReply& reply) {
                         checkAnswer(command, reply);
                         const QString token = reply.result.toMap().value(V::talkToken).toString();
                         targets +=
                             token.isEmpty() ? QString() : QStringLiteral("<Dest>%1</Dest>").arg(token);
                     });
    for (int commands = 0; commands < maxCommands && input.remaining_bytes() > 0; ++commands) {
        switch (input.ConsumeIntegralInRange(0, 7)) {
        case 0:
            session.submit(V::StartTalk, QVariantMap{{V::camId, QStringLiteral("camera-1")}}, 1);
            QCoreApplication::sendPostedEvents();
            break;
        case 1:
            session.submit(
                V::TalkData,
                QVariantMap{
                    {V::targets, targets},
                    {V::sequence, input.ConsumeIntegral<unsigned>()},
                    {V::talkData,
                     QString::fromLatin1(
                         QByteArray::fromStdString(input.ConsumeRandomLengthString(200)).toBase64())}},
                1);
            break;
        case 7:
            session.submit(V::StartTalkToIPAudio, 1, 1);
            QCoreApplication::sendPostedEvents();
            break;
        default:
            session.submit(FuzzWords::pickCommand(input), variantTree(input), 1);
        }
    }
    QCoreApplication::processEvents();
    return 0;
}
