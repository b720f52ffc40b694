#include "server/RecordingServer.h"

#include "protocol/CameraSettingsRecord.h"
#include "protocol/CommandTable.h"
#include "protocol/FieldTypes.h"
#include "protocol/PrintableName.h"
#include "protocol/Words.h"
#include "server/core/ServerSession.h"
#include "server/devices/AbsentCameras.h"

namespace {

template<class Backend, class Kinds>
std::vector<std::unique_ptr<Backend>> makeBackends(const Kinds& kinds)
{
    std::vector<std::unique_ptr<Backend>> backends;
    for (const auto& kind : kinds) {
        backends.push_back(kind.makeBackend());
    }
    return backends;
}

std::vector<std::unique_ptr<CameraBackend>> makeCameraBackends(const std::vector<CameraKind>& kinds)
{
    auto backends = makeBackends<CameraBackend>(kinds);
    backends.push_back(std::make_unique<AbsentCameras>());
    return backends;
}

template<class Backend>
std::vector<Backend*> pointers(const std::vector<std::unique_ptr<Backend>>& backends)
{
    std::vector<Backend*> all;
    for (const auto& backend : backends) {
        all.push_back(backend.get());
    }
    return all;
}

/** An id as a refusal repeats it: 0 for what is none. */
int numberOf(const QVariant& id)
{
    return FieldTypes::wholeNumber(id).value_or(0);
}

/** What a refusal carries besides its text: the id of the record in question, in the shape of the table. */
QVariant refusalResult(const CommandTable::Row& row, const QVariant& payload)
{
    const QVariantMap fields = payload.toMap();
    switch (row.refusal.kind) {
    case PayloadShape::Text:
        return QString(); // what is too large is no id of a camera
    case PayloadShape::Number:
        return row.payload.kind == PayloadShape::Number ? numberOf(payload)
                                                        : numberOf(fields.value(row.payload.keys.first()));
    case PayloadShape::Map: {
        const QString& key = row.refusal.keys.first();
        const QVariant id = fields.value(key);
        return QVariantMap{
            {key, key == Vocabulary::camId ? QVariant(id.toString()) : QVariant(numberOf(id))}};
    }
    default:
        return QVariant();
    }
}

} // namespace

RecordingServer::RecordingServer(ServerConfig config)
    : m_config(std::move(config)), m_data(m_config.dataDirectory), m_records(m_data, m_config.devices),
      m_cameraBackends(makeCameraBackends(m_config.devices.cameras)),
      m_speakerBackends(makeBackends<SpeakerBackend>(m_config.devices.speakers)),
      m_playback(m_records.snapshot(), pointers(m_speakerBackends)), m_scheduleRunner(m_config.clock),
      m_talks(pointers(m_cameraBackends), m_config.talkLimits),
      m_inquiries(backendsByKind(), m_config.devices.absentCameras),
      m_pictures(pointers(m_cameraBackends), m_config.pictureInterval),
      m_videos(pointers(m_cameraBackends), m_config.videoTimes),
      m_errorString(m_data.isHeld() ? m_records.errorString() : m_data.errorString())
{
    registerTalks();
    registerRecords();
    registerPlayback();
    registerCameras();
    Q_ASSERT(static_cast<std::size_t>(m_executors.size()) == CommandTable::rows().size());
    connect(&m_playback, &PlaybackService::playAudioFailed, this, [this](const QVariantMap& fields) {
        for (ServerSession* session : qAsConst(m_sessions)) {
            session->raisePlainEvent(Vocabulary::PlayAudioFailed, fields);
        }
    });
    startSchedules();
}

void RecordingServer::startSchedules()
{
    connect(&m_records, &RecordKeeper::scheduleStored, &m_scheduleRunner, &ScheduleRunner::put);
    connect(&m_records, &RecordKeeper::scheduleDeleted, &m_scheduleRunner, &ScheduleRunner::remove);
    connect(&m_scheduleRunner, &ScheduleRunner::due, this, &RecordingServer::playScheduled);
    for (const QVariant& schedule : m_records.schedules()) {
        m_scheduleRunner.put(schedule.toMap());
    }
    if (isOpen()) {
        m_scheduleRunner.start();
    }
}

/** Plays on the devices of a schedule and of its groups, on each once. */
void RecordingServer::playScheduled(const ScheduledRun& run)
{
    const RecordSnapshot& records = m_records.snapshot();
    ServerReply unused;
    QList<int> devices;
    const auto append = [&](const QList<int>& ids) {
        for (const int id : ids) {
            if (records.device(id, &unused) && !devices.contains(id)) {
                devices.append(id);
            }
        }
    };
    append(run.devices);
    for (const int group : run.groups) {
        append(records.members(group, &unused).value_or(QList<int>()));
    }
    m_playback.playUnasked(records.file(run.file, &unused) ? run.file : 0, devices, run.name);
}

void RecordingServer::registerTalks()
{
    m_executors[Vocabulary::StartTalk] = [this](ServerSession& session, const QVariant& payload, quint64) {
        return m_talks.startTalk(session, payload);
    };
    m_executors[Vocabulary::StartTalkToIPAudio] = [this](ServerSession& session, const QVariant& payload,
                                                         quint64) {
        return startTalkToIPAudio(session, payload);
    };
    m_executors[Vocabulary::StopTalk] = [this](ServerSession& session, const QVariant& payload, quint64) {
        return m_talks.stopTalk(session, payload);
    };
    m_executors[Vocabulary::StopTalkToIPAudio] = [this](ServerSession& session, const QVariant& payload,
                                                        quint64) {
        return m_talks.stopTalkToSpeaker(session, payload.toInt());
    };
    m_executors[Vocabulary::TalkData] = [this](ServerSession& session, const QVariant& payload, quint64) {
        return m_talks.talkData(session, payload);
    };
}

void RecordingServer::registerRecords()
{
    for (const QString& command : m_records.commands()) {
        m_executors[command] = [this, command](ServerSession& session, const QVariant& payload,
                                               quint64) -> std::optional<ServerReply> {
            if (!m_records.hasRoom(session)) {
                return refusal(ReturnCode::tooManyRequests,
                               QStringLiteral("%1 commands wait for their answer; try again")
                                   .arg(RecordKeeper::maxOfSession),
                               refusalResult(*CommandTable::find(command), payload));
            }
            m_records.execute(session, command, payload);
            return std::nullopt;
        };
    }
    connect(&m_records, &RecordKeeper::deviceDeleted, &m_playback, &PlaybackService::stopDeleted);
}

void RecordingServer::registerCameras()
{
    m_executors[Words::FindCameras] = [this](ServerSession& session, const QVariant&, quint64) {
        return m_inquiries.find(session);
    };
    m_executors[Words::AskCamera] = [this](ServerSession& session, const QVariant& payload, quint64) {
        askCamera(session, payload);
        return std::nullopt;
    };
    m_executors[Words::GetCameraPicture] = [this](ServerSession& session, const QVariant& payload, quint64) {
        return m_pictures.get(session, payload.toString());
    };
    m_executors[Words::WatchCamera] = [this](ServerSession& session, const QVariant& payload, quint64) {
        return m_videos.watch(session, payload.toString());
    };
    m_executors[Words::UnwatchCamera] = [this](ServerSession& session, const QVariant& payload, quint64) {
        return m_videos.unwatch(session, payload.toString());
    };
    m_executors[Words::GetCamera] = [this](ServerSession&, const QVariant&, quint64) {
        return done(cameraRecords());
    };
    applyCameraRecords();
    connect(&m_records, &RecordKeeper::camerasChanged, this, &RecordingServer::applyCameraRecords);
    for (const auto& backend : m_cameraBackends) {
        connect(backend.get(), &CameraBackend::camerasChanged, this, &RecordingServer::reportCameras);
    }
}

/** The back ends of the kinds that this server has. */
std::vector<CameraInquiries::Backend> RecordingServer::backendsByKind() const
{
    std::vector<CameraInquiries::Backend> backends;
    for (std::size_t i = 0; i < m_config.devices.cameras.size(); ++i) {
        backends.emplace_back(m_config.devices.cameras[i].name, m_cameraBackends[i].get());
    }
    return backends;
}

/** Gives each back end the records of its kind. */
void RecordingServer::applyCameraRecords()
{
    QList<CameraRecord> left = m_records.cameras();
    for (std::size_t i = 0; i < m_cameraBackends.size(); ++i) {
        const bool absent = i == m_config.devices.cameras.size();
        QList<CameraRecord> own;
        QList<CameraRecord> others;
        for (const CameraRecord& record : qAsConst(left)) {
            (absent || record.kind == m_config.devices.cameras[i].name ? own : others).append(record);
        }
        m_cameraBackends[i]->setRecords(own);
        left = others;
    }
    m_pictures.forget();
    m_videos.forget();
}

/** Raises one event for each client, however many changes there are at a time. */
void RecordingServer::reportCameras()
{
    if (m_camerasReported) {
        return;
    }
    m_camerasReported = true;
    QMetaObject::invokeMethod(
        this,
        [this] {
            m_camerasReported = false;
            for (ServerSession* session : qAsConst(m_sessions)) {
                session->raisePlainEvent(Words::CamerasChanged, QVariantMap());
            }
        },
        Qt::QueuedConnection);
}

QVariantList RecordingServer::cameraRecords() const
{
    QHash<QString, CameraRecord> stored;
    for (const CameraRecord& record : m_records.cameras()) {
        stored.insert(record.id, record);
    }
    QVariantList records;
    for (const auto& backend : m_cameraBackends) {
        for (const Camera& camera : backend->cameras()) {
            const CameraRecord record = camera.address.isEmpty() ? CameraRecord() : stored.value(camera.id);
            records.append(QVariantMap{{Vocabulary::camId, camera.id},
                                       {Words::camName, camera.name},
                                       {Words::online, camera.online},
                                       {Words::camKind, camera.kind},
                                       {Words::camAddress, camera.address},
                                       {Vocabulary::username, record.username},
                                       {Words::camSettings, CameraSettingsRecord::toMap(record.settings)}});
        }
    }
    return records;
}

void RecordingServer::registerPlayback()
{
    for (const QString& name : {Vocabulary::PlayAudio, Vocabulary::AlarmPlayIPAudio}) {
        m_executors[name] = [this, name](ServerSession& session, const QVariant& payload, quint64 request) {
            return m_playback.play(session, name, payload, request);
        };
    }
    m_executors[Vocabulary::PlayGroupAudio] = [this](ServerSession& session, const QVariant& payload,
                                                     quint64 request) {
        return m_playback.playGroup(session, Vocabulary::PlayGroupAudio, payload, request);
    };
    m_executors[Vocabulary::StopCurrentAudio] = [this](ServerSession&, const QVariant& payload, quint64) {
        return m_playback.stop(payload);
    };
    m_executors[Vocabulary::StopCurrentGroupAudio] =
        [this](ServerSession&, const QVariant& payload, quint64) { return m_playback.stopGroup(payload); };
}

std::optional<ServerReply> RecordingServer::startTalkToIPAudio(ServerSession& session,
                                                               const QVariant& payload)
{
    const int id = payload.toInt();
    ServerReply bad;
    const auto device = m_records.snapshot().device(id, &bad);
    if (!device) {
        return TalkService::speakerError(bad.errorText);
    }
    SpeakerBackend* backend = m_playback.backendOf(*device);
    if (backend == nullptr) {
        return TalkService::speakerError(QStringLiteral("\"%1\" is offline").arg(device->name));
    }
    return m_talks.startTalkToSpeaker(session, *device, *backend);
}

void RecordingServer::askCamera(ServerSession& session, const QVariant& payload)
{
    m_records.cameraToAsk(payload, [this, reply = session.replyLater(), asker = QPointer(&session)](
                                       const std::optional<CameraRecord>& camera, const ServerReply& bad) {
        if (camera && asker) {
            m_inquiries.ask(*asker, *camera, reply);
        } else {
            reply.send(bad);
        }
    });
}

std::optional<ServerReply> RecordingServer::execute(ServerSession& session, const QString& command,
                                                    const QVariant& payload, quint64 request)
{
    if (!isOpen()) {
        return refusal(ReturnCode::storageFailed, m_errorString);
    }
    const auto executor = m_executors.constFind(command);
    if (executor == m_executors.constEnd()) {
        return refusal(
            ReturnCode::unknownCommand,
            QStringLiteral("this server does not know the command %1").arg(printableName(command)));
    }
    const CommandTable::Row* row = CommandTable::find(command);
    if (row != nullptr && payloadSize(payload, row->maxSize) > row->maxSize) {
        return refusal(row->malformed, QStringLiteral("\"%1\" is too large").arg(command),
                       refusalResult(*row, payload));
    }
    if (const auto key = row != nullptr ? unknownKey(row->payload, payload) : std::nullopt) {
        return refusal(row->malformed, QStringLiteral("\"%1\" has no %2").arg(command, printableName(*key)),
                       refusalResult(*row, payload));
    }
    if (row != nullptr && !hasKindOf(row->payload, payload)) {
        return refusal(row->malformed, QStringLiteral("\"%1\" has a payload of another type").arg(command),
                       refusalResult(*row, payload));
    }
    if (const auto field = row != nullptr ? FieldTypes::firstMistyped(payload.toMap()) : std::nullopt) {
        return refusal(row->malformed,
                       QStringLiteral("\"%1\" of \"%2\" is %3").arg(field->key, command, field->wanted),
                       refusalResult(*row, payload));
    }
    return (*executor)(session, payload, request);
}

std::optional<ServerReply> RecordingServer::executeTalkData(ServerSession& session,
                                                            const TalkDataPayload& talk, quint64 /*request*/)
{
    // A regular payload breaks no rule that execute looks at.
    return isOpen() ? m_talks.talkData(session, talk) : refusal(ReturnCode::storageFailed, m_errorString);
}

void RecordingServer::openSession(ServerSession& session)
{
    m_sessions.insert(&session);
}

void RecordingServer::closeSession(ServerSession& session)
{
    m_sessions.remove(&session);
    m_talks.closeSession(session);
    m_inquiries.closeSession(session);
    m_pictures.closeSession(session);
    m_records.closeSession(session);
    m_videos.closeSession(session);
}
