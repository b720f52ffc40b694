#pragma once

#include <QObject>
#include <QStringList>
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

    /** Asks the server to look for cameras; found and answered follow. @return whether the request was sent
     */
    Q_INVOKABLE bool find();
    /**
     * Asks the server what a camera can do; known and answered follow. The login goes to the address that it
     * is for, and nowhere else.
     *
     * @param id     of the record; empty for a camera that is in none
     * @param camera as of update
     */
    Q_INVOKABLE bool ask(const QString& id, const QVariantMap& camera);

    /** Returns the settings of a new camera: a map as of CameraSettingsRecord. */
    Q_INVOKABLE QVariantMap defaultSettings() const;
    /** Returns the codecs that "talkCodec" may name; a camera's record may have another one. */
    Q_INVOKABLE QStringList talkCodecs() const;
    /** Returns whether all settings of such a map have values that a server takes. */
    Q_INVOKABLE bool areValid(const QVariantMap& settings) const;
    /** Returns whether a text is the address of a camera, see RecordChecks::cameraAddress. */
    Q_INVOKABLE bool isAddress(const QString& text) const;

public Q_SLOTS:
    /** Takes notice of a reply, after the watch has. */
    void replyArrived(const QString& command, const QString& returnCode, const QString& errorText,
                      quint64 request, const QVariant& result);

Q_SIGNALS:
    /** Emitted with what a search found, before answered: maps with "name", "address" and "detail", texts of
     * bounded length for people. Anybody may have answered the search, with anything. */
    void found(const QVariantList& cameras);
    /** Emitted with what a camera can do, before answered: lines for people. */
    void known(const QStringList& lines);
    /** Emitted with each answer to a request. @param code of the reply */
    void answered(bool success, const QString& code);

private:
    static QVariantMap changed(const QString& id, const QVariantMap& camera);
    bool send(const QString& command, const QVariant& payload);

    PluginHost& m_host;
    RequestTimeouts& m_watch;
};
