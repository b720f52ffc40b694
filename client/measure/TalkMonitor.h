#pragma once

#include "audio/PacketDecoder.h"
#include "audio/SoundLevel.h"
#include "audio/TimedSound.h"

#include <QObject>
#include <QVariant>

#include <vector>

/** Watches the talk packets of a plug-in: those that it sends, and those that come for it. */
class TalkMonitor : public QObject
{
    Q_OBJECT

public:
    int packets() const { return m_packets; }
    int refused() const { return m_refused; }
    quint32 sequence() const { return m_sequence; }
    /** Packets whose number did not follow the one before. */
    int sequenceGaps() const { return m_sequenceGaps; }
    double level() const { return m_level; }     ///< Of the last packet, dBFS.
    double loudest() const { return m_loudest; } ///< Of all packets, dBFS.

    /** From the capture of a packet's last sample to its command; a value a packet, seconds. */
    const std::vector<double>& commandTimes() const { return m_commandTimes; }

    /** What was said, at the time when the microphone had it. Lost packets are silence. */
    const TimedSound& said() const { return m_said; }

    int received() const { return m_received; }
    /** When the first packet came, seconds of the steady clock. */
    double firstReceivedAt() const { return m_firstReceivedAt; }
    /** When the sound at the start of the first packet was said, by its position; on the same clock. */
    double firstReceivedSaidAt() const { return m_said.startTime + m_firstReceivedPosition; }

public Q_SLOTS:
    void commandSent(const QString& command, const QVariant& payload, bool accepted);
    void eventArrived(const QString& event, const QVariant& payload);

private:
    void keepSaid(const DecodedTalk& talk);

    PacketDecoder m_decoder;
    int m_packets = 0;
    int m_refused = 0;
    quint32 m_sequence = 0;
    int m_sequenceGaps = 0;
    double m_level = SoundLevel::silence;
    double m_loudest = SoundLevel::silence;
    std::vector<double> m_commandTimes;
    TimedSound m_said;
    std::uint32_t m_saidPosition = 0; ///< Of the first sample kept.
    int m_received = 0;
    double m_firstReceivedAt = 0;
    double m_firstReceivedPosition = 0; ///< Seconds since the first sample kept.
};
