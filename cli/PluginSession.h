#pragma once

#include "client/ExitStatus.h"
#include "client/PluginClient.h"
#include "client/PluginHost.h"
#include "embedded/ClientOptions.h"

#include <QEventLoop>
#include <QObject>

#include <functional>
#include <memory>

/** A plug-in with a server behind it, for commands that ask one thing after another and wait for each answer.
 */
class PluginSession : public QObject
{
    Q_OBJECT

public:
    explicit PluginSession(ClientOptions options);
    ~PluginSession() override;

    /** Loads the plug-in and waits for the server; ExitSuccess, or what to end with after a message. */
    ExitStatus open();

    PluginClient& plugin() { return m_plugin; }
    PluginHost& host() { return m_host; }
    const ClientOptions& options() const { return m_options; }

    /** Serves events until the condition holds; false after the time-out. @param timeout ms; 0: the options'
     */
    bool wait(const std::function<bool()>& condition, int timeout = 0);

    /** Waits until the list of devices has come; false after the time-out. */
    bool waitForDevices();

    /** Waits until a reply to a command has come, its return code; empty after the time-out. */
    QString waitForReply(const QString& command, int timeout = 0);

    /** The error text of the last reply that was no success. */
    QString errorText() const { return m_errorText; }

    /** Forgets the replies that have come. */
    void forget();

    static int fail(ExitStatus status, const QString& message);

private:
    ClientOptions m_options;
    std::unique_ptr<ServerLink> m_link;
    PluginHost m_host;
    PluginClient m_plugin;
    bool m_connected = false;
    bool m_devicesListed = false;
    QString m_lost; ///< Why there is no connection, finally.
    QString m_errorText;
    QList<QPair<QString, QString>> m_replies; ///< Command and return code.
};
