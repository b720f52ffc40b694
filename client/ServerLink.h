#pragma once

#include <QObject>
#include <QString>
#include <QVariant>

/** The host's connection to a server. Lives on the plug-in's thread, on which it emits all signals. */
class ServerLink : public QObject
{
    Q_OBJECT

public:
    /** Starts to connect; connected follows, after the call has returned. */
    virtual void open() = 0;

    /**
     * Sends a command. A reply, if one comes, comes later.
     *
     * @param payload a QVariantMap, an int, a QString, or an invalid QVariant for none
     * @param request from nextRequestNumber; each reply to the command carries it
     * @return false when the command cannot be sent, because there is no connection, the command is too
     * large, or too much waits to be sent; no reply follows then
     */
    virtual bool send(const QString& command, const QVariant& payload, quint64 request) = 0;

Q_SIGNALS:
    /** Emitted each time the connection to the server comes up. */
    void connected();

    /** Emitted each time a connection that was up is lost. No reply to what was sent over it follows. */
    void disconnected();

    /**
     * Emitted for each reply; some commands have several.
     *
     * @param command as the server names it, which may be anything
     * @param request of the command that it answers; 0 or any other number for a reply that nobody asked for
     * @param returnCode "0" for success
     * @param errorText says what went wrong; empty on success
     */
    void replied(const QString& command, const QVariant& result, quint64 request, const QString& returnCode,
                 const QString& errorText);

    /** Emitted with the progress of sending, in bytes, by links on which sending takes time. */
    void sending(qint64 sent, qint64 total);

    /** Emitted for each event; the payload is a QVariantMap. */
    void eventRaised(const QString& event, const QVariant& payload);
};
