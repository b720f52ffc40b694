#pragma once

#include "server/core/CommandExecutor.h"

#include <QObject>
#include <QPointer>
#include <QVariantMap>

class ServerSession;

/** The reply to a command that is not known yet. */
class LateReply
{
public:
    LateReply(ServerSession& session, QString command, void* userData);

    /** Sends the reply, unless the session is gone. Once. */
    void send(const ServerReply& reply) const;

private:
    QPointer<ServerSession> m_session;
    QString m_command;
    void* m_userData;
};

/**
 * One client at the server: takes commands, gives each of them a reply later, and raises events. A
 * transport connects to its signals. All calls and signals are on the server's thread.
 */
class ServerSession : public QObject
{
    Q_OBJECT

public:
    /** @param executor outlives the session */
    explicit ServerSession(CommandExecutor& executor);
    ~ServerSession() override;

    /** Takes a command; @p userData comes back with the reply untouched. */
    void submit(const QString& command, const QVariant& payload, void* userData);

    /** Sends a reply on; commands that take their time are answered more than once. */
    void sendReply(const QString& command, void* userData, const ServerReply& reply);

    /**
     * Keeps the reply to the command that is being executed for later. Only inside of
     * CommandExecutor::execute, which then returns nothing.
     */
    LateReply replyLater();

    /** Tells the client of an event whose fields are the payload itself. */
    void raisePlainEvent(const QString& event, const QVariantMap& fields);

    /** Tells the client of an event whose fields stand in a map under the event's own name. */
    void raiseEvent(const QString& event, const QVariantMap& fields);

Q_SIGNALS:
    /** A reply to a command; never emitted from inside of submit. */
    void replied(const QString& command, void* userData, const ServerReply& reply);

    /** An event; never emitted from inside of submit. */
    void eventRaised(const QString& event, const QVariant& payload);

private:
    CommandExecutor& m_executor;
    QString m_command;          ///< While it is being executed.
    void* m_userData = nullptr; ///< Of that command.
};
