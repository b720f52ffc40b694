#pragma once

#include <QObject>
#include <QString>
#include <QVariant>

/** The host's way to a server, whatever lies between. Lives on the plug-in's thread. */
class ServerLink : public QObject
{
    Q_OBJECT

public:
    /** Starts to connect; connected follows. */
    virtual void open() = 0;

    /**
     * Sends a command. A reply, if one comes, comes later.
     *
     * @param request from nextRequestNumber; each reply to the command carries it
     * @return false when it cannot be sent
     */
    virtual bool send(const QString& command, const QVariant& payload, quint64 request) = 0;

Q_SIGNALS:
    /** The connection to the server came up. */
    void connected();

    /**
     * A reply came; some commands have several.
     *
     * @param command as the server names it, which may be anything
     * @param request 0 or any other number for a reply that nobody asked for
     */
    void replied(const QString& command, const QVariant& result, quint64 request, const QString& returnCode,
                 const QString& errorText);

    /** How much of what waits to be sent has gone; bytes. Only links on which that takes time tell it. */
    void sending(qint64 sent, qint64 total);

    void eventRaised(const QString& event, const QVariant& payload);
};
