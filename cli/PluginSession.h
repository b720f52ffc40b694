#pragma once

#include "client/ExitStatus.h"
#include "client/PluginClient.h"
#include "client/PluginHost.h"
#include "embedded/ClientOptions.h"

#include <QEventLoop>
#include <QObject>

#include <functional>
#include <memory>

/** A plug-in connected to a server, for commands that send requests and wait for their replies. */
class PluginSession : public QObject
{
    Q_OBJECT

public:
    /** Makes the link to the server; open connects. */
    explicit PluginSession(ClientOptions options);
    ~PluginSession() override;

    /** Loads the plug-in and waits for the server; returns ExitSuccess, or prints a message and returns
     * another. */
    ExitStatus open();

    /** Returns the plug-in. */
    PluginClient& plugin() { return m_plugin; }
    /** Returns the plug-in's host. */
    PluginHost& host() { return m_host; }
    /** Returns the options. */
    const ClientOptions& options() const { return m_options; }

    /** Serves events until the condition holds; returns false after @p timeout in ms, 0 for the options'. */
    bool wait(const std::function<bool()>& condition, int timeout = 0);

    /** Waits for the list of devices; returns false after the time-out. */
    bool waitForDevices();

    /** Waits for a reply to a command; returns its return code, empty after the time-out. */
    QString waitForReply(const QString& command, int timeout = 0);

    /** Returns the error text of the last reply with a code other than "0". */
    QString errorText() const { return m_errorText; }

    /** Forgets the replies that have come. */
    void forget();

    /** Prints a message to stderr; returns @p status. */
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
