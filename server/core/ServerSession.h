#pragma once

#include "server/core/CommandExecutor.h"

#include <QObject>
#include <QPointer>
#include <QVariantMap>

#include <deque>
#include <functional>

class ServerSession;

/** The reply to a command that is not known yet. */
class LateReply
{
public:
    /** @param command and @p request of the reply */
    LateReply(ServerSession& session, QString command, quint64 request);

    /** Sends the reply, unless the session is gone. Once. */
    void send(const ServerReply& reply) const;

private:
    QPointer<ServerSession> m_session;
    QString m_command;
    quint64 m_request;
};

/**
 * One client at the server: takes commands, gives each of them a reply later, and raises events. A
 * transport connects to its signals. All calls and signals are on the server's thread.
 */
class ServerSession : public QObject
{
    Q_OBJECT

public:
    /**
     * @param executor outlives the session
     * @param client   who it is, for people: a user, or an address
     */
    explicit ServerSession(CommandExecutor& executor, QString client = QStringLiteral("another client"));
    ~ServerSession() override;

    /** Returns who the client is, for people. */
    QString client() const { return m_client; }

    /** Executes a command; replied follows. @param request the client's number for it, which each reply
     * carries */
    void submit(const QString& command, const QVariant& payload, quint64 request);

    /** Executes a TalkData command; replied follows. */
    void submitTalkData(const TalkDataPayload& talk, quint64 request);

    /** While one lives, what is to be emitted later waits for its end, and is emitted there. */
    class Turn
    {
    public:
        /** @param session may be destroyed meanwhile */
        explicit Turn(ServerSession& session);
        ~Turn();
        Turn(const Turn&) = delete;
        Turn& operator=(const Turn&) = delete;

    private:
        const QPointer<ServerSession> m_session;
    };

    /** Emits replied later; a command that takes long has several replies. */
    void sendReply(const QString& command, quint64 request, const ServerReply& reply);

    /**
     * Postpones the reply to the command that is being executed. To be called only inside
     * CommandExecutor::execute, which then returns nothing.
     */
    LateReply replyLater();

    /** Takes what returns how many bytes the client has not received; the transport's, which outlives it. */
    void setWaiting(std::function<qint64()> waiting) { m_waiting = std::move(waiting); }

    /** Returns how many bytes wait for the client; 0 where nothing ever waits. */
    qint64 waitingBytes() const { return m_waiting ? m_waiting() : 0; }

    /** Takes events of talks as CBOR, by encodedEventRaised: for transports that send it. */
    void setTakesEncoded() { m_takesEncoded = true; }

    /** Returns whether encodedEventRaised is wanted in place of eventRaised. */
    bool takesEncoded() const { return m_takesEncoded; }

    /** Emits encodedEventRaised later. */
    void raiseEncodedEvent(const QString& event, const QByteArray& payload);

    /** Emits eventRaised later, with the fields as the payload. */
    void raisePlainEvent(const QString& event, const QVariantMap& fields);

    /** Emits eventRaised later, with the fields in a map under the event's own name. */
    void raiseEvent(const QString& event, const QVariantMap& fields);

Q_SIGNALS:
    /** Emitted for each reply to a command, never during a call of submit. */
    void replied(const QString& command, quint64 request, const ServerReply& reply);

    /** Emitted for each event, never during a call of submit. */
    void eventRaised(const QString& event, const QVariant& payload);

    /** Emitted for an event whose payload is CBOR already; only if setTakesEncoded was called. */
    void encodedEventRaised(const QString& event, const QByteArray& payload);

private:
    void emitLater(std::function<void()> emission);
    void wakeUp();
    void emitWaiting();

    CommandExecutor& m_executor;
    const QString m_client;
    bool m_takesEncoded = false;
    std::deque<std::function<void()>> m_emissions; ///< That wait, in their order.
    bool m_wakesUp = false;                        ///< emitWaiting is called soon.
    bool m_hasTurn = false;                        ///< At whose end they are emitted.
    std::function<qint64()> m_waiting;
    QString m_command;     ///< While it is being executed.
    quint64 m_request = 0; ///< Of that command.
};
