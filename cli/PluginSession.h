#pragma once

#include "client/ExitStatus.h"
#include "client/PluginClient.h"
#include "client/PluginHost.h"
#include "embedded/ClientOptions.h"

#include <QHash>
#include <QObject>

#include <deque>
#include <functional>
#include <memory>
#include <optional>

/** A plug-in connected to a server, for commands that send requests and wait for their replies. */
class PluginSession : public QObject
{
    Q_OBJECT

public:
    static constexpr int forever = -1; ///< A time-out that never comes.

    /** A reply of the server. */
    struct Reply
    {
        QString code;      ///< "0" for success.
        QString errorText; ///< Empty on success.
        QVariant result;   ///< The payload.

        /** Returns whether the code is that of success. */
        bool success() const;
        /** Returns the error text with the code. */
        QString refusal() const;
    };

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
    /** Returns the server inside this program; null when another one is used. */
    const RecordingServer* embeddedServer() const;

    /**
     * Serves events until the condition holds. The condition is evaluated several times a second.
     *
     * @param timeout in ms; 0 for the options'
     * @return false after the time-out, after the loss of the connection, and after Ctrl-C
     */
    bool wait(const std::function<bool()>& condition, int timeout = 0);

    /** Returns whether the connection failed or was lost. */
    bool isLost() const { return !m_lost.isEmpty(); }

    /**
     * Calls the plug-in; returns the number of the request that this sends, 0 when nothing was sent.
     *
     * @param call takes a PluginClient&
     */
    template<class Call>
    quint64 send(const Call& call)
    {
        m_lastSent = 0;
        call(m_plugin);
        return m_lastSent;
    }

    /** Sends a command that the plug-in does not know; returns the number of the request, 0 when it was not
     * sent. */
    quint64 sendOwn(const QString& command, const QVariant& payload = QVariant());

    /** Waits for the next reply to a request; empty when wait returns false. */
    std::optional<Reply> nextReply(quint64 request, int timeout = 0);

    /**
     * Waits for the next reply to a request.
     *
     * @param reply receives it, unless null
     * @return ExitSuccess for one with the code "0"; prints a message, and returns another, for any other
     */
    ExitStatus receive(quint64 request, Reply* reply = nullptr, int timeout = 0);

    /** Prints why there was no reply; returns ExitNoAnswer. */
    ExitStatus noAnswer();

    /**
     * @name Records
     * @{
     */
    /** Waits until the plug-in has the records, once; prints a message when it does not get them. */
    ExitStatus readDevices();
    ExitStatus readFiles();
    ExitStatus readGroups(); ///< With the devices, whose names they show.
    ExitStatus readSchedules();
    /** @} */

    /** Prints a message to stderr; returns @p status. */
    static ExitStatus fail(ExitStatus status, const QString& message);

private:
    template<class Call>
    ExitStatus readOnce(bool* isRead, const Call& call);

    ClientOptions m_options;
    std::unique_ptr<ServerLink> m_link;
    bool m_connected = false;
    bool m_refused = false; ///< The server refused the login.
    QString m_lost;         ///< Why there is no connection, finally.
    quint64 m_lastSent = 0;
    QHash<QString, quint64> m_unasked; ///< What the plug-in sent by itself when it was connected.
    QHash<quint64, std::deque<Reply>>
        m_replies; ///< To all commands but talk packets; empty before the first, maxReplies at most.
    bool m_devicesRead = false;
    bool m_filesRead = false;
    bool m_groupsRead = false;
    bool m_schedulesRead = false;
    // Last: the plug-in ends its talks when it is unloaded, and those commands are recorded above.
    PluginHost m_host;
    PluginClient m_plugin;
};
