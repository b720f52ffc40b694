// Any commands of the table, one after another, into the reference server, which has cameras of its own and
// of the records, open talks and a record of each kind.

#include "fuzz/VariantTree.h"
#include "protocol/ScheduleRule.h"
#include "server/RecordingServer.h"
#include "server/core/ServerSession.h"
#include "server/devices/AbsentCameras.h"
#include "server/devices/simulated/SimulatedDevices.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <algorithm>
#include <iterator>
#include <optional>

namespace {

namespace V = Vocabulary;
namespace W = Words;

constexpr int maxCommands = 100;
constexpr int maxRecords = 50; // of a kind, before all begins anew

const QString formerKind = QStringLiteral("former"); // of cameras, which the server does not know any more

/** A new server's devices: simulated ones. */
ServerConfig configFor(const QTemporaryDir& recordings, const QTemporaryDir& data)
{
    SimulatedConfig simulated;
    simulated.cameras = defaultCameras();
    simulated.recordingDirectory = recordings.path();
    ServerConfig config;
    config.dataDirectory = data.path();
    config.devices = simulatedDevices(simulated);
    return config;
}

/** A template for QTemporaryDir, in memory if possible: the database writes to its disk for each change. */
QString dataFolder()
{
    const QDir memory(QStringLiteral("/dev/shm"));
    return (memory.exists() ? memory : QDir::temp()).filePath(QStringLiteral("fuzz_commands-XXXXXX"));
}

void add(RecordingServer& server, const QString& command, const QVariantMap& record)
{
    ServerSession session(server);
    if (server.execute(session, command, record, 1)->returnCode != ReturnCode::success) {
        std::abort();
    }
}

/** Leaves a simulated camera of id 1, and one of id 2 whose kind the next server will not know. */
ServerConfig withCameraRecords(ServerConfig config)
{
    ServerConfig former = config;
    former.devices.cameras.push_back({formerKind, [] { return std::make_unique<AbsentCameras>(); }});
    RecordingServer server(former);
    for (const QString& kind : {simulatedKind(), formerKind}) {
        add(server, W::AddCamera,
            {{W::camName, kind}, {W::camKind, kind}, {W::camAddress, QStringLiteral("10.0.0.7")}});
    }
    return config;
}

/**
 * Gives keys that the command does not have the names of some that it has: the server refuses unknown ones
 * before it looks at anything else.
 */
QVariant withKnownKeys(const QVariant& payload, const QStringList& keys)
{
    const QVariantMap map = payload.toMap();
    if (map.isEmpty() || keys.isEmpty()) {
        return payload;
    }
    QStringList unused;
    std::copy_if(keys.begin(), keys.end(), std::back_inserter(unused),
                 [&map](const QString& key) { return !map.contains(key); });
    QVariantMap known;
    for (auto entry = map.begin(); entry != map.end(); ++entry) {
        if (keys.contains(entry.key())) {
            known.insert(entry.key(), entry.value());
        } else if (!unused.isEmpty()) {
            known.insert(unused.takeFirst(), entry.value());
        }
    }
    return known;
}

/** A server with cameras, and a record of each kind, of id 1; of cameras also one of a kind that it does not
 * know. */
class Place
{
public:
    Place() : m_server(withCameraRecords(configFor(m_recordings, m_data)))
    {
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
            add(m_server, command, record);
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
        const auto cameras = m_server.execute(session, W::GetCamera, QVariant(), 1)->result.toList();
        const auto has = [&](const QString& id, const QString& kind) {
            return std::any_of(cameras.begin(), cameras.end(), [&](const QVariant& camera) {
                return camera.toMap().value(V::camId) == id && camera.toMap().value(W::camKind) == kind;
            });
        };
        if (!has(QStringLiteral("1"), simulatedKind()) || !has(QStringLiteral("2"), formerKind) ||
            cameras.size() > maxRecords) {
            return false;
        }
        return std::all_of(std::begin(lists), std::end(lists), [&](const auto& list) {
            const QVariantList records =
                m_server.execute(session, list.first, QVariant(), 1)->result.toList();
            return !records.isEmpty() && records.size() <= maxRecords &&
                   records.first().toMap().value(list.second) == 1;
        });
    }

private:
    QTemporaryDir m_recordings;
    QTemporaryDir m_data{dataFolder()};
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
    const QString cameras[] = {QStringLiteral("camera-1"), QStringLiteral("1"), QStringLiteral("2")};
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
            session.submit(V::StartTalk, QVariantMap{{V::camId, cameras[commands % std::size(cameras)]}}, 1);
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
        default: {
            const QString command = FuzzWords::pickCommand(input);
            const QVariant payload = variantTree(input);
            const CommandTable::Row* row = CommandTable::find(command);
            const bool asItIs = commands % 4 == 3 || row == nullptr;
            session.submit(command, asItIs ? payload : withKnownKeys(payload, row->payload.keys), 1);
        }
        }
    }
    QCoreApplication::processEvents();
    return 0;
}
