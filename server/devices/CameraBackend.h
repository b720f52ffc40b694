#pragma once

#include "server/devices/CameraSettings.h"
#include "server/devices/DeviceTalk.h"

#include <QList>

#include <memory>

/** A camera as a back end knows it. */
struct Camera
{
    QString id;
    QString name;
    bool online = true; ///< As far as the back end knows.
    QString kind{};
    QString address{}; ///< Empty for one that is not in the server's records.
};

/** A camera of the server's records. */
struct CameraRecord
{
    QString id;
    QString name;
    QString kind;
    QString address;
    QString username{};
    QString password{};
    CameraSettings settings{};

    bool operator==(const CameraRecord& other) const
    {
        return id == other.id && name == other.name && kind == other.kind && address == other.address &&
               username == other.username && password == other.password && settings == other.settings;
    }
};

/**
 * All cameras of one kind: simulated ones, or those that are reached by one protocol. All calls are on the
 * server's thread and return at once; signals may come from another thread. Talks end before their back end.
 */
class CameraBackend : public QObject
{
    Q_OBJECT

public:
    /** Takes the records of its kind, at the start and whenever one of them changes. Open talks go on. */
    virtual void setRecords(const QList<CameraRecord>& records) = 0;

    /** The cameras, in the order in which people see them. */
    virtual QList<Camera> cameras() const = 0;

    /**
     * Starts to open a talk to one of its cameras. Talks of one camera are independent of each other, unless
     * the camera itself refuses a second one.
     *
     * @return never null; the talk's signals report how it goes
     */
    virtual std::unique_ptr<DeviceTalk> openTalk(const QString& camera) = 0;

Q_SIGNALS:
    /** A camera came, went, or changed its name or whether it is online. */
    void camerasChanged();
};
