#include "client/measure/TalkMonitor.h"

#include "audio/PacketHeader.h"
#include "audio/SteadyClock.h"
#include "protocol/ReturnCode.h"
#include "protocol/Words.h"

#include <QVariantMap>

#include <algorithm>

namespace {

constexpr std::size_t maxCaptured = 600U * TalkPacketDecoder::sampleRate; // samples, ten minutes

} // namespace

void TalkMonitor::commandSent(const QString& command, const QVariant& payload, bool accepted)
{
    if (command != Vocabulary::TalkData) {
        return;
    }
    const double now = SteadyClock::now();
    const QVariantMap message = payload.toMap();
    const quint32 sequence = message.value(Vocabulary::sequence).toUInt();
    ++m_packets;
    m_refused += accepted ? 0 : 1;
    m_sequenceGaps += sequence == m_sequence + 1 ? 0 : 1;
    m_sequence = sequence;
    const QByteArray text = message.value(Vocabulary::talkData).toString().toLatin1();
    if (const auto talk = TalkPacketDecoder::decode(QByteArray::fromBase64(text))) {
        m_level = SoundLevel::rmsDbfs(talk->samples);
        m_loudest = std::max(m_loudest, m_level);
        m_commandTimes.push_back(now - SteadyClock::fromMicroseconds(talk->captureTime));
        keepCaptured(*talk);
    }
}

void TalkMonitor::replyArrived(const QString& command, const QString& returnCode, const QString& errorText)
{
    if (command != Vocabulary::TalkData || returnCode == ReturnCode::success) {
        return;
    }
    m_refused = std::min(m_refused + 1, m_packets); // a server may answer more often than it is asked
    if (m_refusal.isEmpty()) {
        m_refusal = QStringLiteral("%1 (code %2)").arg(errorText, returnCode);
    }
}

void TalkMonitor::keepCaptured(const DecodedTalk& talk)
{
    if (m_captured.samples.empty()) {
        m_captured.sampleRate = TalkPacketDecoder::sampleRate;
        m_captured.startTime = SteadyClock::fromMicroseconds(talk.captureTime) -
                               static_cast<double>(talk.samples.size()) / TalkPacketDecoder::sampleRate;
        m_capturedPosition = talk.position;
    }
    const std::size_t begin = talk.position - m_capturedPosition;
    const std::size_t end = begin + talk.samples.size();
    if (end > maxCaptured) {
        return;
    }
    m_captured.samples.resize(std::max(m_captured.samples.size(), end));
    std::copy(talk.samples.begin(), talk.samples.end(),
              m_captured.samples.begin() + static_cast<std::ptrdiff_t>(begin));
}

void TalkMonitor::eventArrived(const QString& event, const QVariant& payload)
{
    if (event != Vocabulary::AudioReceived) {
        return;
    }
    if (m_received++ > 0) {
        return;
    }
    m_firstReceivedAt = SteadyClock::now();
    const QVariantMap fields = payload.toMap().value(event).toMap();
    const QByteArray packet = QByteArray::fromBase64(fields.value(Words::AudioData).toString().toLatin1());
    const auto header = PacketHeader::fromBytes(reinterpret_cast<const std::uint8_t*>(packet.constData()),
                                                static_cast<std::size_t>(packet.size()));
    if (header && header->sampleRate > 0) {
        m_firstReceivedPosition = static_cast<double>(header->position) / header->sampleRate -
                                  static_cast<double>(m_capturedPosition) / TalkPacketDecoder::sampleRate;
    }
}
