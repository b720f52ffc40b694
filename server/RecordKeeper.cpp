#include "server/RecordKeeper.h"

#include "protocol/Limits.h"
#include "protocol/Words.h"
#include "server/records/CameraStore.h"
#include "server/schedules/ScheduleStore.h"

#include <QPointer>

#include <future>
#include <utility>

namespace {

constexpr qint64 maxUploadBytes = 200 << 20; // in memory

} // namespace

/** All stores of one database. */
struct RecordKeeper::Stores
{
    Stores(const DataFolder& folder, DeviceKinds kinds)
        : databasePath(folder.isLasting() ? folder.path("records.sqlite") : QString()),
          database(databasePath),
          secrets(folder.isLasting() ? folder.path("secret.key") : QString(),
                  !DeviceStore::hasPasswords(database) && !CameraStore::hasPasswords(database)),
          cameras(database, secrets, std::move(kinds)), devices(database, secrets),
          files(database, folder.path("files")), groups(database, devices),
          schedules(database, devices, groups, files)
    {
    }

    /** Why the records cannot be used; empty when they can. */
    QString whyNotOpen() const
    {
        if (!database.isOpen()) {
            return unreadable(database.errorString());
        }
        if (!cameras.errorString().isEmpty()) {
            return unreadable(cameras.errorString());
        }
        return secrets.isValid() ? QString() : secrets.errorString();
    }

    QString unreadable(const QString& why) const { return QStringLiteral("%1: %2").arg(databasePath, why); }

    QString databasePath;
    RecordDatabase database;
    PasswordCipher secrets;
    CameraStore cameras;
    DeviceStore devices;
    FileStore files;
    GroupStore groups;
    ScheduleStore schedules;
};

RecordKeeper::RecordKeeper(const DataFolder& folder, DeviceKinds kinds)
    : m_thread([this] { m_stores.reset(); })
{
    registerDevices();
    registerSchedules();
    registerCameras();
    struct Start
    {
        QString error;
        QVariantList devices;
        QVariantList groups;
        QVariantList schedules;
        QList<FileStore::File> files;
        QList<CameraRecord> cameras;
    };
    std::promise<Start> promise;
    m_thread.run([&]() -> WorkerThread::Report {
        m_stores = std::make_unique<Stores>(folder, std::move(kinds));
        Start start;
        start.error = m_stores->whyNotOpen();
        const auto read = [&](const ServerReply& list) {
            if (start.error.isEmpty() && list.returnCode != ReturnCode::success) {
                start.error = m_stores->unreadable(list.errorText);
            }
            return list.result.toList();
        };
        if (start.error.isEmpty()) {
            start.devices = read(m_stores->devices.list());
            start.groups = read(m_stores->groups.list());
            start.schedules = read(m_stores->schedules.list());
            start.cameras = m_stores->cameras.records();
            if (const auto files = m_stores->files.files()) {
                start.files = *files;
            } else {
                read(refusal(ReturnCode::storageFailed, m_stores->database.errorString()));
            }
        }
        promise.set_value(std::move(start));
        return [] {};
    });
    Start start = promise.get_future().get();
    m_error = start.error;
    for (const QVariant& device : qAsConst(start.devices)) {
        m_snapshot.putDevice(device.toMap());
    }
    for (const QVariant& group : qAsConst(start.groups)) {
        m_snapshot.putGroup(group.toMap());
    }
    for (const FileStore::File& file : qAsConst(start.files)) {
        m_snapshot.putFile(file);
    }
    m_schedules = std::move(start.schedules);
    m_cameras = std::move(start.cameras);
}

RecordKeeper::~RecordKeeper() = default;

/** Registers a change of a store. @param apply called with the reply of one that succeeded */
template<class Store, class Apply>
void RecordKeeper::on(const QString& command, Store RecordKeeper::Stores::*store,
                      ServerReply (Store::*operation)(const QVariant&), Apply apply)
{
    m_operations[command] = [=](Stores& stores, const QVariant& payload) -> Outcome {
        const ServerReply reply = ((stores.*store).*operation)(payload);
        return {reply, [apply, result = reply.result] { apply(result); }};
    };
}

/** Registers the list of a store. */
template<class Store>
void RecordKeeper::onList(const QString& command, Store RecordKeeper::Stores::*store)
{
    m_operations[command] = [store](Stores& stores, const QVariant&) -> Outcome {
        return {(stores.*store).list(), nullptr};
    };
}

void RecordKeeper::registerDevices()
{
    const auto putDevice = [this](const QVariant& device) { m_snapshot.putDevice(device.toMap()); };
    on(Vocabulary::AddIPAudio, &Stores::devices, &DeviceStore::add, putDevice);
    on(Vocabulary::UpdateIPAudio, &Stores::devices, &DeviceStore::update, putDevice);
    on(Vocabulary::DeleteIPAudio, &Stores::devices, &DeviceStore::remove, [this](const QVariant& id) {
        m_snapshot.removeDevice(id.toInt());
        Q_EMIT deviceDeleted(id.toInt());
    });
    onList(Vocabulary::RetrieveIPAudioModel, &Stores::devices);
    const auto putGroup = [this](const QVariant& group) { m_snapshot.putGroup(group.toMap()); };
    on(Vocabulary::AddNetworkAudioGroup, &Stores::groups, &GroupStore::add, putGroup);
    on(Vocabulary::UpdateNetworkAudioGroup, &Stores::groups, &GroupStore::update, putGroup);
    on(Vocabulary::DeleteNetworkAudioGroup, &Stores::groups, &GroupStore::remove,
       [this](const QVariant& id) { m_snapshot.removeGroup(id.toInt()); });
    onList(Vocabulary::GetNetworkAudioGroup, &Stores::groups);
    m_operations[Vocabulary::UploadFile] = nullptr;
    m_operations[Vocabulary::DeleteFile] = [this](Stores& stores, const QVariant& payload) -> Outcome {
        return {stores.files.remove(payload), [this, id = payload.toInt()] { m_snapshot.removeFile(id); }};
    };
    onList(Vocabulary::GetAudioFile, &Stores::files);
}

void RecordKeeper::registerSchedules()
{
    const auto stored = [this](const QVariant& schedule) { Q_EMIT scheduleStored(schedule.toMap()); };
    on(Vocabulary::AddNetworkAudioSchedule, &Stores::schedules, &ScheduleStore::add, stored);
    on(Vocabulary::UpdateNetworkAudioSchedule, &Stores::schedules, &ScheduleStore::update, stored);
    on(Vocabulary::DeleteNetworkAudioSchedule, &Stores::schedules, &ScheduleStore::remove,
       [this](const QVariant& id) { Q_EMIT scheduleDeleted(id.toInt()); });
    onList(Vocabulary::GetNetworkAudioSchedule, &Stores::schedules);
}

void RecordKeeper::registerCameras()
{
    for (const auto& [command, operation] : {std::pair(Words::AddCamera, &CameraStore::add),
                                             std::pair(Words::UpdateCamera, &CameraStore::update),
                                             std::pair(Words::DeleteCamera, &CameraStore::remove)}) {
        m_operations[command] = [this, operation = operation](Stores& stores,
                                                              const QVariant& payload) -> Outcome {
            const ServerReply reply = (stores.cameras.*operation)(payload);
            return {reply, [this, records = stores.cameras.records()] {
                        m_cameras = records;
                        Q_EMIT camerasChanged();
                    }};
        };
    }
}

void RecordKeeper::execute(ServerSession& session, const QString& command, const QVariant& payload)
{
    const Answer answer = answerTo(session);
    if (const Operation& operation = m_operations[command]) {
        run(answer, operation, payload);
    } else {
        upload(answer, payload);
    }
}

/** Counts a command until it is answered. */
RecordKeeper::Answer RecordKeeper::answerTo(ServerSession& session)
{
    ++m_waiting[&session];
    return [this, asker = QPointer<ServerSession>(&session),
            reply = session.replyLater()](const ServerReply& answer) {
        if (asker && --m_waiting[asker.data()] == 0) {
            m_waiting.remove(asker.data());
        }
        reply.send(answer);
    };
}

void RecordKeeper::run(const Answer& answer, const Operation& operation, const QVariant& payload)
{
    m_thread.run([this, answer, operation, payload]() -> WorkerThread::Report {
        const Outcome outcome = operation(*m_stores, payload);
        return [answer, outcome] {
            if (outcome.apply && outcome.reply.returnCode == ReturnCode::success) {
                outcome.apply();
            }
            answer(outcome.reply);
        };
    });
}

void RecordKeeper::upload(const Answer& reply, const QVariant& payload)
{
    const qint64 bytes = payload.toMap().value(Words::content).toByteArray().size();
    if (m_uploads >= Limits::maxWaitingUploads || m_uploadBytes + bytes > maxUploadBytes) {
        reply(refusal(ReturnCode::fileRefused,
                      QStringLiteral("too many uploads are being read (maxWaitingUploads is %1); try again")
                          .arg(Limits::maxWaitingUploads)));
        return;
    }
    ++m_uploads;
    m_uploadBytes += bytes;
    const auto end = [this, reply](const ServerReply& answer) {
        --m_uploads;
        reply(answer);
    };
    const auto store = [this, end](const FileStore::Upload& upload, std::optional<int> length) {
        m_thread.run([this, end, upload, length]() -> WorkerThread::Report {
            FileStore::File added;
            const ServerReply answer = m_stores->files.add(upload, length, &added);
            return [this, end, answer, added] {
                if (answer.returnCode == ReturnCode::success) {
                    m_snapshot.putFile(added);
                }
                end(answer);
            };
        });
    };
    m_thread.run([this, end, store, bytes, payload]() -> WorkerThread::Report {
        ServerReply bad;
        const auto upload = m_stores->files.receive(payload, &bad);
        if (!upload) {
            return [this, end, bad, bytes] {
                m_uploadBytes -= bytes;
                end(bad);
            };
        }
        return [this, store, bytes, upload = *upload] {
            m_uploadBytes -= bytes;
            m_measuring.run([this, store, upload]() -> WorkerThread::Report {
                const auto length = m_stores->files.measure(upload);
                return [store, upload, length] { store(upload, length); };
            });
        };
    });
}

void RecordKeeper::cameraToAsk(
    const QVariant& payload, std::function<void(const std::optional<CameraRecord>&, const ServerReply&)> take)
{
    m_thread.run([this, payload, take = std::move(take)]() -> WorkerThread::Report {
        ServerReply bad;
        const auto camera = m_stores->cameras.cameraToAsk(payload.toMap(), &bad);
        return [take, camera, bad] { take(camera, bad); };
    });
}
