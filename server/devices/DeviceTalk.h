#pragma once

#include "server/devices/VoicePacket.h"

#include <QObject>
#include <QString>

/**
 * One talk to a camera or a speaker, from the request to its end.
 *
 *   Opening -- opened --> Open -- close or lost --> ended
 *      '------ refused, or close --> ended
 *
 * All calls are on the server's thread and return at once. A back end may work on another thread and emit the
 * signals there; they reach the server as queued ones. Signals that do not fit the state are ignored, so a
 * back end need not prevent them. The first signal comes after the call that made the talk has returned.
 */
class DeviceTalk : public QObject
{
    Q_OBJECT

public:
    DeviceTalk() { qRegisterMetaType<VoicePacket>(); } // a queued signal carries it

    /** Ends the talk if it has not ended, without waiting. No signal is emitted from then on. */
    ~DeviceTalk() override = default;

    /**
     * Hears one talk packet: a PacketHeader and G.711 mu-law. Called while the line is open.
     *
     * @return false when it is not such a packet, or cannot be stored
     */
    virtual bool hear(const QByteArray& packet) = 0;

    /** Starts to close the line, open or not. closed follows; a caller does not wait for it without limit. */
    virtual void close() = 0;

Q_SIGNALS:
    /** The line is open: what is said from now on is heard. */
    void opened();

    /** The line does not open. @param returnCode see ReturnCode @param reason for people */
    void refused(const QString& returnCode, const QString& reason);

    /** The open line is gone. @param reason for people */
    void lost(const QString& reason);

    /** The device says something. */
    void spoke(const VoicePacket& packet);

    /** The line is closed, and what it held is free. */
    void closed();
};
