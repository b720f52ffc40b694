#pragma once

#include "audio/PacketStream.h"

#include <QHash>
#include <QObject>
#include <QTimer>
#include <QVariant>

#include <array>
#include <deque>
#include <memory>

/**
 * How loud is what is said and what is heard, measured on the packets that pass the host: a level for a meter
 * and the peaks of the last ten seconds for a line. Measures nothing while there is no talk.
 */
class TalkMeters : public QObject
{
    Q_OBJECT
    /** 0 at -60 dBFS and below, 1 at full scale. */
    Q_PROPERTY(qreal captured READ captured NOTIFY ticked)
    /** The level of what is received, 0 at -60 dBFS and below, 1 at full scale. */
    Q_PROPERTY(qreal received READ received NOTIFY ticked)

public:
    static constexpr int historyLength = 200; ///< Peaks, 50 ms each.

    /** Whose sound. */
    enum Direction
    {
        Captured, ///< The microphone.
        Received, ///< The other side.
    };
    Q_ENUM(Direction)

    /** Peaks, 0 to 1, in a ring. */
    struct History
    {
        std::array<float, historyLength> peaks{}; ///< From the place of next, the oldest first.
        std::size_t next = 0;                     ///< Where the next peak goes: the oldest one.
    };

    /** @param clock ticks while the meters move, and outlives the object; null for one of its own */
    explicit TalkMeters(QTimer* clock = nullptr);

    /** Returns the property captured. */
    qreal captured() const { return m_captured.level; }
    /** Returns the property received. */
    qreal received() const { return m_received.level; }
    /** Returns the peaks of the last ten seconds. */
    const History& history(Direction direction) const
    {
        return direction == Captured ? m_captured.history : m_received.history;
    }

    /** Measures while there is a talk; clears the line at its start. */
    void setActive(bool active);

public Q_SLOTS:
    /** Measures a command of the host, if it is a packet of sound. */
    void commandSent(const QString& command, const QVariant& payload, bool accepted);
    /** Measures an event, if it is a packet of sound. */
    void eventArrived(const QString& event, const QVariant& payload);

Q_SIGNALS:
    /** Emitted every 50 ms during a talk: levels and lines have changed. */
    void ticked();
    /** A packet of sound went out. */
    void packetSent();

private:
    /** Packets come in lumps; their peaks wait in a queue and leave it one a tick. */
    struct Meter
    {
        qreal level = 0;
        History history;
        std::deque<float> waiting;
        bool flows = false;
        float peak = 0;          ///< Of the piece that is being filled.
        std::size_t samples = 0; ///< In it.

        void take(const std::vector<std::int16_t>& sound, int samplesPerSecond);
        void tick();
    };

    void tick();

    QHash<QString, std::shared_ptr<PacketStream>> m_streams; ///< By token.
    Meter m_captured;
    Meter m_received;
    QTimer m_ownClock;
    QTimer& m_clock; ///< Runs while there is a talk, and until the meters have come down.
    bool m_active = false;
};
