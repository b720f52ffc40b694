#pragma once

#include "server/core/ServerSession.h"
#include "server/devices/DeviceKinds.h"
#include "server/records/DataFolder.h"
#include "server/records/RecordSnapshot.h"
#include "system/WorkerThread.h"

#include <QHash>
#include <QObject>

#include <functional>
#include <memory>
#include <optional>

/**
 * Executes the commands of records on a thread of its own, and measures uploads on another, so that no sound
 * waits for the database, for the disk or for a decoder.
 *
 *   execute --> thread of records: store --> snapshot, signals, reply
 *   upload  --> thread of records: content to the disk --> thread that measures --> thread of records: record
 *
 * Commands are executed in the order in which they come, but an upload lets others pass while it is measured.
 * Its calls and signals are on the server's thread.
 */
class RecordKeeper : public QObject
{
    Q_OBJECT

public:
    /** Opens the database and reads all records, which it waits for. @param folder outlives the object */
    RecordKeeper(const DataFolder& folder, DeviceKinds kinds);
    ~RecordKeeper() override;

    /** Returns why the records cannot be used, for people; empty when they can. */
    QString errorString() const { return m_error; }

    /** Returns the names of the commands that it executes. */
    QStringList commands() const { return m_operations.keys(); }

    static constexpr int maxOfSession = 200; ///< Commands of one client that wait for their answer.

    /** Returns whether a client may have one more command executed. */
    bool hasRoom(const ServerSession& session) const { return m_waiting.value(&session) < maxOfSession; }

    /** Executes one of its commands, for which there is room; the reply comes later. */
    void execute(ServerSession& session, const QString& command, const QVariant& payload);

    /** Forgets a session that goes away; what it has asked for is done all the same. */
    void closeSession(const ServerSession& session) { m_waiting.remove(&session); }

    /** Returns devices, groups and files as they are stored. */
    const RecordSnapshot& snapshot() const { return m_snapshot; }

    /** Returns the cameras as they are stored, by id. */
    const QList<CameraRecord>& cameras() const { return m_cameras; }

    /** Returns the schedules as they were stored at the start. */
    const QVariantList& schedules() const { return m_schedules; }

    /**
     * Finds out which camera a client wants to be asked, see CameraStore::cameraToAsk.
     *
     * @param take called later with the camera, or with the refusal when there is none
     */
    void cameraToAsk(const QVariant& payload,
                     std::function<void(const std::optional<CameraRecord>&, const ServerReply&)> take);

Q_SIGNALS:
    /** The cameras have changed. */
    void camerasChanged();
    /** A device has been deleted. */
    void deviceDeleted(int id);
    /** A schedule was added or changed. @param record as it is stored */
    void scheduleStored(const QVariantMap& record);
    /** A schedule has been deleted. */
    void scheduleDeleted(int id);

private:
    struct Stores;
    /** A reply, and what it changes on the server's thread when it is a success. */
    struct Outcome
    {
        ServerReply reply;
        std::function<void()> apply;
    };
    using Operation = std::function<Outcome(Stores&, const QVariant& payload)>;

    template<class Store, class Apply>
    void on(const QString& command, Store RecordKeeper::Stores::*store,
            ServerReply (Store::*operation)(const QVariant&), Apply apply);
    template<class Store>
    void onList(const QString& command, Store RecordKeeper::Stores::*store);
    void registerDevices();
    void registerSchedules();
    void registerCameras();
    /** Sends the answer to a command. */
    using Answer = std::function<void(const ServerReply& reply)>;
    Answer answerTo(ServerSession& session);
    void run(const Answer& answer, const Operation& operation, const QVariant& payload);
    void upload(const Answer& answer, const QVariant& payload);

    QString m_error;
    RecordSnapshot m_snapshot;
    QList<CameraRecord> m_cameras;
    QVariantList m_schedules;
    QHash<QString, Operation> m_operations; ///< By command; without an operation for an upload.
    QHash<const ServerSession*, int>
        m_waiting;                    ///< Commands without an answer; only of sessions that are there.
    int m_uploads = 0;                ///< That are being measured, or wait for it.
    qint64 m_uploadBytes = 0;         ///< Of uploads that are not on the disk yet.
    std::unique_ptr<Stores> m_stores; ///< Made, used and destroyed on the thread of records.
    WorkerThread m_thread;            ///< Of records.
    WorkerThread m_measuring;
};
