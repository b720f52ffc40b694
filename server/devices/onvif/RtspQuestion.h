#pragma once

#include <QObject>
#include <QString>
#include <QTimer>

class QTcpSocket;

/**
 * Asks whether an RTSP server is there, without a login: OPTIONS on a connection of its own, which any
 * answers (RFC 2326, clause 10.1). Used on the thread that made it.
 */
class RtspQuestion : public QObject
{
    Q_OBJECT

public:
    /**
     * Starts to ask; answered follows.
     *
     * @param address URL of a stream, rtsp or rtsps
     * @param time    that the server has, ms
     */
    RtspQuestion(const QString& address, int time, QObject* parent = nullptr);
    ~RtspQuestion() override;

    /** Returns the request. @param number of the request on its connection */
    static QByteArray text(const QString& address, int number);

Q_SIGNALS:
    /** Emitted once. The receiver may delete the object. @param isThere whether an RTSP server answered */
    void answered(bool isThere);

private:
    void read();
    void finish(bool isThere);

    QTcpSocket* m_socket;
    QTimer m_timer;
};
