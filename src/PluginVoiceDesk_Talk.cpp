// The talk: its targets, the replies and events that open and close them, the packets' way out and in.
//
//   StartTalk, StartTalkToIPAudio --> handleStartTalk... --> m_talkTargetList
//   TalkDisconnected --> handleTalkDisconnected --> stopTalk
//   audioCaptured --> handleAudioCapture --> Base64Encode --> sendEncodeTalkData --> TalkData to all targets
//   AudioReceived --> handleAudioReceived --> Base64Decode --> AudioRenderer

#include "src/Base64.h"
#include "src/PendingBlocks.h"
#include "src/PluginVoiceDesk.h"
#include "src/vocabulary/PluginWords.h"
#include "src/vocabulary/StreamType.h"
#include "src/vocabulary/Vocabulary.h"

#include <QVarLengthArray>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

using ReturnCode::success;

namespace {

// Holds the text of any packet of up to 1536 bytes, more than the capture format has, without an allocation.
constexpr int encodedTextSize = 2049;

// A guard: the largest packet, in bytes, whose text may be shorter than the packet and leave it zeros. No
// codec has packets of that size, and an event of a few bytes must not cost gigabytes.
constexpr quint64 maxUnfilledPacket = 1U << 20U;

constexpr double receivedVolume = 100.0; // deliberate: outside of 0.0 to 1.0, which the output limits

} // namespace

void PluginVoiceDesk::setTalking(bool talking)
{
    if (m_talkingFlag != talking) {
        m_talkingFlag = talking;
        Q_EMIT talkingChanged();
    }
}

void PluginVoiceDesk::stopAllTalk()
{
    const QList<QVariant> targets = m_talkTargetList;
    for (const QVariant& entry : targets) {
        const QVariantMap target = entry.toMap();
        send(Vocabulary::StopTalk,
             QVariantMap{
                 {Vocabulary::talkToken, target.value(Vocabulary::talkToken).toString()},
                 {Vocabulary::relayPath, target.value(Vocabulary::relayPath).toString()},
             });
    }
    m_talkTargetList.clear();
}

bool PluginVoiceDesk::isTokenExists(const QString& token) const
{
    return std::any_of(m_talkTargetList.cbegin(), m_talkTargetList.cend(), [&token](const QVariant& entry) {
        return entry.toMap().value(Vocabulary::talkToken).toString() == token;
    });
}

bool PluginVoiceDesk::isAudioIdExists(int id) const
{
    // Deliberate: a camera target has no device id, which reads as 0, so id 0 counts as present beside one.
    return std::any_of(m_talkTargetList.cbegin(), m_talkTargetList.cend(), [id](const QVariant& entry) {
        return entry.toMap().value(Vocabulary::deviceID).toInt() == id;
    });
}

void PluginVoiceDesk::handleStartTalk(QVariant result, void* /*userData*/, QString returnCode,
                                      QString /*errorCode*/, bool /*flag*/, const QString& /*extra*/)
{
    if (returnCode != success) {
        stopAudioCapture(); // deliberate: for other open targets, too
        Q_EMIT startTalkResponse(false);
        return;
    }
    const QVariantMap reply = result.toMap();
    m_talkTargetList.append(QVariantMap{
        {Vocabulary::camId, reply.value(Vocabulary::camId).toString()},
        {Vocabulary::talkToken, reply.value(Vocabulary::talkToken).toString()},
        {Vocabulary::relayPath, reply.value(Vocabulary::relayPath).toString()},
    });
    setTalking(true);
    Q_EMIT startTalkResponse(true);
}

void PluginVoiceDesk::handleStartTalkToIPAudio(QVariant result, void* userData, QString returnCode,
                                               QString /*errorCode*/, bool /*flag*/, const QString& /*extra*/)
{
    const std::unique_ptr<int> deviceId = PendingBlocks::takeNumber(userData, PendingBlocks::Unknown::Adopt);
    if (!deviceId) {
        return; // not a reply to a request of ours
    }
    if (returnCode != success) {
        stopAudioCapture(); // deliberate: for other open targets, too
        // Deliberate: the code itself is not passed on.
        Q_EMIT startTalkToIPAudioResponse(false, QString(), *deviceId);
        return;
    }
    const QVariantMap reply = result.toMap();
    const QString error = reply.value(Vocabulary::error).toString();
    if (!error.isEmpty()) {
        Q_EMIT startTalkToIPAudioResponse(false, error, *deviceId);
        return;
    }
    m_talkTargetList.append(QVariantMap{
        {Vocabulary::deviceID, *deviceId},
        {Vocabulary::talkToken, reply.value(Vocabulary::talkToken).toString()},
    });
    setTalking(true);
    Q_EMIT startTalkToIPAudioResponse(true, QString(), *deviceId);
}

void PluginVoiceDesk::handleStopTalk(QVariant /*result*/, void* /*userData*/, QString /*returnCode*/,
                                     QString /*errorCode*/, bool /*flag*/, const QString& /*extra*/)
{
    // Deliberate: the reply is dropped, whatever it says.
}

void PluginVoiceDesk::handleStopTalkToIPAudio(QVariant /*result*/, void* /*userData*/, QString returnCode,
                                              QString /*errorCode*/, bool /*flag*/, const QString& /*extra*/)
{
    if (returnCode != success) {
        return;
    }
    setTalking(false);
    m_talkTargetList.clear(); // deliberate: all targets go, though the server closed just one
}

void PluginVoiceDesk::handleTalkDisconnected(const QVariant& payload)
{
    const QVariantMap event = payload.toMap().value(Vocabulary::TalkDisconnected).toMap();
    if (!isTokenExists(event.value(QStringLiteral("Token")).toString())) {
        return;
    }
    stopTalk(); // deliberate: one lost target ends the whole talk
    Q_EMIT talkDisconnected();
}

void PluginVoiceDesk::handleAudioCapture(DWORD type, QByteArray dataBuffer)
{
    if (type != StreamType::G711MuLaw || m_talkTargetList.isEmpty()) {
        return;
    }
    const auto size = static_cast<unsigned>(dataBuffer.size());
    const unsigned capacity = Base64EncodeCapacity(size);
    QVarLengthArray<char, encodedTextSize> encoded(static_cast<int>(capacity) + 1);
    const int length = Base64Encode(reinterpret_cast<const unsigned char*>(dataBuffer.constData()), size,
                                    encoded.data(), capacity);
    encoded[length] = '\0';
    sendEncodeTalkData(encoded.data());
}

void PluginVoiceDesk::sendEncodeTalkData(char* encoded)
{
    const QString plainDestination = QStringLiteral("<Dest>%1</Dest>");
    const QString relayedDestination = QStringLiteral("<Dest>%1/%2</Dest>");
    QString targets;
    for (const QVariant& entry : qAsConst(m_talkTargetList)) {
        const QVariantMap target = entry.toMap();
        const QString relayPath = target.value(Vocabulary::relayPath).toString();
        const QString token = target.value(Vocabulary::talkToken).toString();
        // Deliberate: one arg() per marker, so a "%1" inside a relay path is replaced by the token.
        targets +=
            relayPath.isEmpty() ? plainDestination.arg(token) : relayedDestination.arg(relayPath).arg(token);
    }
    ++m_talkSequence;
    send(Vocabulary::TalkData, QVariantMap{
                                   {Vocabulary::targets, targets},
                                   {Vocabulary::sequence, m_talkSequence},
                                   {Vocabulary::talkData, QString::fromLatin1(encoded)},
                               });
}

void PluginVoiceDesk::handleSendTalkData(QVariant /*result*/, void* /*userData*/, QString /*returnCode*/,
                                         QString /*errorCode*/, bool /*flag*/, const QString& /*extra*/)
{
    // Deliberate: the reply is dropped, whatever it says.
}

void PluginVoiceDesk::handleAudioReceived(const QVariant& payload)
{
    const QVariantMap inner = payload.toMap().value(Vocabulary::AudioReceived).toMap();
    if (!isTokenExists(inner.value(QStringLiteral("Token")).toString())) {
        return;
    }
    const quint32 bitstreamSize = inner.value(QStringLiteral("BitstreamSize")).toUInt();
    const quint32 offset = inner.value(QStringLiteral("Offset")).toUInt();
    const std::string text = inner.value(QStringLiteral("AudioData")).toString().toStdString();
    const quint64 packetSize = quint64{offset} + bitstreamSize;
    if (packetSize > std::max<quint64>(maxUnfilledPacket, text.size())) {
        return; // deliberate: dropped, where smaller ones are played as zero bytes
    }
    // Deliberate: with one spare byte, the text of a packet of remainder 1 by 3 does not fit, and zero bytes
    // are played in its place.
    std::vector<unsigned char> buffer(packetSize + 1);

    TMediaDataPacketInfo record{};
    record.StreamType = inner.value(QStringLiteral("StreamType")).toUInt();
    record.AudioSamplingFreq = inner.value(QStringLiteral("AudioSamplingFreq")).toUInt();
    record.AudioChannelNum = static_cast<quint8>(inner.value(QStringLiteral("AudioChannelNum")).toUInt());
    record.Offset = offset;
    record.BitstreamSize = bitstreamSize;
    record.FrameNumber = inner.value(QStringLiteral("FrameNumber")).toUInt();
    record.Buffer = buffer.data();
    Base64Decode(text.data(), static_cast<unsigned>(text.size()), buffer.data(),
                 static_cast<unsigned>(buffer.size()));
    const MediaPacketPtr packet = makeMediaPacket(record);

    m_audioRenderer.SetAudioOn(true);
    m_audioRenderer.SetVolume(receivedVolume);
    m_audioRenderer.Play(packet, true);
}
