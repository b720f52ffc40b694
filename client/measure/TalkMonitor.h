#pragma once

#include "audio/SoundLevel.h"
#include "audio/TalkPacketDecoder.h"
#include "audio/TimedSound.h"

#include <QObject>
#include <QVariant>

#include <vector>

/** Measures the talk packets of a plug-in: those that it sends, and those that it receives. */
class TalkMonitor : public QObject
{
    Q_OBJECT

public:
    /** Returns the number of packets sent, refused ones included. */
    int packets() const { return m_packets; }
    /** Returns the number of packets that the link did not take, or that the server refused. */
    int refused() const { return m_refused; }
    /** Returns why the server refused the first of them, with its return code; empty when it refused none. */
    QString refusal() const { return m_refusal; }
    /** Returns the sequence number of the last packet sent; 0 before. */
    quint32 sequence() const { return m_sequence; }
    /** Returns the number of packets whose sequence number did not follow the one before. */
    int sequenceGaps() const { return m_sequenceGaps; }
    double level() const { return m_level; }     ///< Returns the level of the last packet sent, dBFS.
    double loudest() const { return m_loudest; } ///< Returns the highest level of all packets sent, dBFS.

    /** Returns the seconds from the capture of a packet's last sample to its command, for each packet. */
    const std::vector<double>& commandTimes() const { return m_commandTimes; }

    /** Returns the captured speech, with the time of its capture; ten minutes at most. Lost packets are
     * silence. */
    const TimedSound& captured() const { return m_captured; }

    /** Returns the number of packets received. */
    int received() const { return m_received; }
    /** Returns when the first packet was received, seconds of the steady clock. */
    double firstReceivedAt() const { return m_firstReceivedAt; }
    /** Returns when the first sound received was captured, by its position; seconds of the same clock. */
    double firstReceivedCapturedAt() const { return m_captured.startTime + m_firstReceivedPosition; }

public Q_SLOTS:
    /** Measures a command of PluginHost::commandSent if it is a talk packet. */
    void commandSent(const QString& command, const QVariant& payload, bool accepted);
    /** Counts a reply of PluginHost::replyArrived if it is to a talk packet and refuses it. */
    void replyArrived(const QString& command, const QString& returnCode, const QString& errorText);
    /** Measures an event of PluginHost::eventArrived if it is a packet received. */
    void eventArrived(const QString& event, const QVariant& payload);

private:
    void keepCaptured(const DecodedTalk& talk);

    int m_packets = 0;
    int m_refused = 0;
    QString m_refusal;
    quint32 m_sequence = 0;
    int m_sequenceGaps = 0;
    double m_level = SoundLevel::silence;
    double m_loudest = SoundLevel::silence;
    std::vector<double> m_commandTimes;
    TimedSound m_captured;
    std::uint32_t m_capturedPosition = 0; ///< Of the first sample kept.
    int m_received = 0;
    double m_firstReceivedAt = 0;
    double m_firstReceivedPosition = 0; ///< Seconds since the first sample kept.
};
