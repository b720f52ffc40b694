#pragma once

#include "PacketDecoder.h"
#include "SoundLevel.h"

#include <QObject>
#include <QVariant>

/** Watches the talk packets that the plug-in sends: how many, which number, how loud. */
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

public Q_SLOTS:
    void commandSent(const QString& command, const QVariant& payload, bool accepted);

private:
    PacketDecoder m_decoder;
    int m_packets = 0;
    int m_refused = 0;
    quint32 m_sequence = 0;
    int m_sequenceGaps = 0;
    double m_level = SoundLevel::silence;
    double m_loudest = SoundLevel::silence;
};
