#pragma once

#include <QObject>
#include <QVariant>

class PluginHost;
class RequestTimeouts;

/**
 * Sends the commands of camera records, which the plug-in does not know, and reports their answers. Used on
 * the window's thread.
 */
class CameraRequests : public QObject
{
    Q_OBJECT

public:
    /** @param watch gets to know each request, as those of the plug-in */
    CameraRequests(PluginHost& host, RequestTimeouts& watch);

    /**
     * Asks the server to add a camera; answered follows.
     *
     * @param camera a payload of AddCamera. Without a user name the login is the one in the address, if there
     *               is one
     * @return whether the request was sent
     */
    Q_INVOKABLE bool add(const QVariantMap& camera);
    /**
     * Asks the server to change a camera; answered follows.
     *
     * @param camera as of add. With an empty password the camera keeps its own, without a user name it loses
     *               both
     */
    Q_INVOKABLE bool update(const QString& id, const QVariantMap& camera);
    /** Asks the server to delete a camera; answered follows. */
    Q_INVOKABLE bool remove(const QString& id);

    /** Returns the settings of a new camera: a map as of CameraSettingsRecord. */
    Q_INVOKABLE QVariantMap defaultSettings() const;
    /** Returns whether all settings of such a map have values that a server takes. */
    Q_INVOKABLE bool areValid(const QVariantMap& settings) const;
    /** Returns whether a text is the address of a camera, see RecordChecks::cameraAddress. */
    Q_INVOKABLE bool isAddress(const QString& text) const;

public Q_SLOTS:
    /** Takes notice of a reply, after the watch has. */
    void replyArrived(const QString& command, const QString& returnCode);

Q_SIGNALS:
    /** Emitted with each answer to a request. @param code of the reply */
    void answered(bool success, const QString& code);

private:
    bool send(const QString& command, const QVariant& payload);

    PluginHost& m_host;
    RequestTimeouts& m_watch;
};
