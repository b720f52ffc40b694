#include "TalkMonitor.h"

#include <QVariantMap>

#include <algorithm>

void TalkMonitor::commandSent(const QString& command, const QVariant& payload, bool accepted)
{
    if (command != QLatin1String("TalkData")) {
        return;
    }
    const QVariantMap message = payload.toMap();
    const quint32 sequence = message.value(QStringLiteral("sequence")).toUInt();
    ++m_packets;
    m_refused += accepted ? 0 : 1;
    m_sequenceGaps += sequence == m_sequence + 1 ? 0 : 1;
    m_sequence = sequence;
    const QByteArray text = message.value(QStringLiteral("talkData")).toString().toLatin1();
    if (const auto talk = m_decoder.decode(QByteArray::fromBase64(text))) {
        m_level = SoundLevel::rmsDbfs(talk->samples);
        m_loudest = std::max(m_loudest, m_level);
    }
}
