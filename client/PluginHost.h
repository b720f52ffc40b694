#pragma once

#include "client/SentRequests.h"
#include "client/ServerLink.h"
#include "platform/FrameworkWrapperBase.h"

#include <QMap>
#include <QPluginLoader>

class PluginBase;

/**
 * The host framework, as far as the plug-in needs one: loads the plug-in and carries commands, replies and
 * events between it and a server.
 *
 *   plug-in -- SendCommand --> PluginHost --> ServerLink --> server
 *   plug-in <-- CommandProcessor, EventProcessor, PluginServerConnected -- PluginHost <-- ServerLink
 *
 * Each command gets a request number, which travels beside the plug-in: its replies carry it, and the
 * plug-in's user data stays here under it until the first of them.
 *
 * Everything happens on the thread that made the host. The front end reaches the plug-in through its
 * meta-object only.
 */
class PluginHost : public QObject, private FrameworkWrapperBase
{
    Q_OBJECT

public:
    /** @param link outlives the host */
    explicit PluginHost(ServerLink& link);
    ~PluginHost() override;

    /**
     * Loads the plug-in, initialises it, and opens the link.
     *
     * @param path the library; empty to look beside the program and in the lib folder beside its folder
     * @return false when that fails; errorString then says why
     */
    bool load(const QString& path);

    /** Returns why load failed. */
    QString errorString() const { return m_errorString; }

    /** Returns the plug-in's object; null before load and after unload. */
    QObject* plugin() const;

    /** Destroys the plug-in, which ends its talks. */
    void unload();

    /**
     * Sends a command of the host's own. Its replies are emitted under its name, whatever name they carry,
     * and the plug-in sees none of them, as long as they come before the answers to a thousand later ones.
     *
     * @return the number of the request; 0 when the link did not take it
     */
    quint64 sendOwn(const QString& command, const QVariant& payload = QVariant());

Q_SIGNALS:
    /**
     * The plug-in sent a command; emitted inside the call of the plug-in that sends it.
     *
     * @param accepted whether the link took it
     * @param request the number that its replies will carry
     */
    void commandSent(const QString& command, const QVariant& payload, bool accepted, quint64 request);

    /**
     * A reply came, before the plug-in sees it. A success that opens a talk without a token is a refusal here
     * and for the plug-in.
     *
     * @param request of the command that it answers; any other number when nobody asked for it
     * @param result the payload of the reply
     */
    void replyArrived(const QString& command, const QString& returnCode, const QString& errorText,
                      quint64 request, const QVariant& result);

    /** Emitted for each event. The plug-in gets it afterwards, if EventTable says so. */
    void eventArrived(const QString& event, const QVariant& payload);

private:
    void reservedOperation() override {}
    bool SendCommand(void* pluginHandle, const QString& pluginId, const QString& command,
                     const QVariant& param, void* userData, bool flag, const QString& extra) override;

    void passReply(const QString& nameInReply, const QVariant& result, quint64 number,
                   const QString& returnCode, const QString& errorText);

    ServerLink& m_link;
    SentRequests m_requests;
    QMap<quint64, QString> m_own; ///< The last commands of sendOwn on this connection, by request number.
    QPluginLoader m_loader;
    PluginBase* m_plugin = nullptr; ///< Owned; the loader's instance.
    QString m_errorString;
};
