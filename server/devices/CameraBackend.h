#pragma once

#include "protocol/CameraSettings.h"
#include "server/devices/CameraPicture.h"
#include "server/devices/CameraReport.h"
#include "server/devices/CameraVideo.h"
#include "server/devices/DeviceTalk.h"

#include <QList>

#include <functional>
#include <memory>

/** A camera as a back end knows it. */
struct Camera
{
    QString id;               ///< Unique on the server.
    QString name;             ///< For people.
    bool online = true;       ///< As far as the back end knows.
    QString kind{};           ///< Name of its CameraKind.
    QString address{};        ///< Empty for one that is not in the server's records.
    bool isExclusive = false; ///< One client at a time talks to it.
    bool isTried = false;     ///< A talk to it is opened even where it seems to be offline.
};

/** A camera of the server's records. */
struct CameraRecord
{
    QString id;                ///< The number of the record as text.
    QString name;              ///< For people.
    QString kind;              ///< Name of its CameraKind.
    QString address;           ///< IPv4, IPv6, a host name, host:port, or a URL without a login.
    QString username{};        ///< Of the login at the camera; empty for none.
    QString password{};        ///< The same.
    CameraSettings settings{}; ///< How it is talked to.

    /** Compares all fields. */
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

    /** Takes what a search found, once, after the call that started it has returned. */
    using TakeFound = std::function<void(const FoundCameras& found)>;
    /** Takes what a camera answered, once, after the call that asked it has returned. */
    using TakeReport = std::function<void(const CameraReport& report)>;
    /** Takes a picture, or why there is none, once, after the call that asked for it has returned. */
    using TakePicture = std::function<void(const CameraPicture& picture)>;

    /**
     * Starts to look for cameras of this kind in the networks of this machine; takes seconds, and no login is
     * involved. One search is under way at a time. What is under way when the back end is destroyed is given
     * up.
     *
     * @return false for a kind whose cameras cannot be looked for; nothing is called then
     */
    virtual bool findCameras([[maybe_unused]] TakeFound take) { return false; }

    /**
     * Starts to ask a camera what it can do; takes seconds.
     *
     * @param camera one of the records, or one that is in none; its login is sent to its address alone
     * @return false for a kind whose cameras cannot be asked; nothing is called then
     */
    virtual bool askCamera([[maybe_unused]] const CameraRecord& camera, [[maybe_unused]] TakeReport take)
    {
        return false;
    }

    /**
     * Starts to ask one of its cameras for a still; takes seconds. One question to each camera is under way
     * at a time.
     *
     * @return false for a kind without pictures, and for a camera that is none of this kind; nothing is
     * called then
     */
    virtual bool askPicture(const QString& /*camera*/, TakePicture /*take*/) { return false; }

    /**
     * Starts to open the video of one of its cameras. Each camera has one at a time. It ends before the back
     * end.
     *
     * @return null for a kind without videos, and for a camera that is none of this kind
     */
    virtual std::unique_ptr<CameraVideo> openVideo(const QString& /*camera*/) { return nullptr; }

Q_SIGNALS:
    /** A camera came, went, or changed its name or whether it is online. */
    void camerasChanged();
};
