#include "src/FrameSmithWrapper.h"

#include "platform/SoundTap.h"
#include "src/WaveReaderState.h"
#include "src/vocabulary/LogGate.h"
#include "src/vocabulary/StreamType.h"

#include <QMetaType>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <thread>

namespace {

constexpr std::uint32_t captureSampleRate = 8000; // Hz
constexpr std::uint32_t captureChannels = 1;
constexpr std::uint32_t captureBitsPerSample = 16;
constexpr std::uint32_t samplesPerFrame = 640;
constexpr std::uint32_t pcmBlockSize = samplesPerFrame * 2; // bytes
constexpr std::uint32_t packetHeadroom = 120;               // bytes that a packet may need beyond its PCM

// Deliberate: packets are asked for a little faster than they sound, so that a caller never falls behind.
constexpr double paceFactor = 1.1;

DWORD pacedMilliseconds(DWORD milliseconds)
{
    return static_cast<DWORD>(milliseconds / paceFactor);
}

void sleepMilliseconds(DWORD milliseconds)
{
    if (milliseconds == 0) {
        return;
    }
    using Clock = std::chrono::steady_clock;
    const Clock::time_point now = Clock::now();
    const std::chrono::nanoseconds pause = std::chrono::milliseconds(milliseconds);
    const bool representable = pause <= Clock::time_point::max() - now;
    const Clock::time_point wakeUp = representable ? now + pause : Clock::time_point::max();
    while (Clock::now() < wakeUp) {
        std::this_thread::sleep_until(wakeUp);
    }
}

// The meta-type of a 32-bit DWORD: a queued signal copies as many bytes as the meta-type has.
constexpr int dwordMetaType =
    sizeof(unsigned long) == sizeof(DWORD) ? int{QMetaType::ULong} : int{QMetaType::UInt};

} // namespace

FrameSmithWrapper::FrameSmithWrapper()
{
    QMetaType::registerNormalizedTypedef("DWORD", dwordMetaType);
    // A library that does not come up is not an error here: every later call reports it by its code.
    Initial();
    FrameSmithChannelOptions options{};
    options.constant0 = 7;
    options.streamType = StreamType::G711MuLaw;
    options.sampleRate = captureSampleRate;
    options.channels = captureChannels;
    options.constant16 = 1;
    options.samplesPerFrame = samplesPerFrame;
    FrameSmith_CreateChannel(m_library, &m_packetChannel, &options);
    m_waveReader = std::make_unique<WaveReaderState>();
}

FrameSmithWrapper::~FrameSmithWrapper()
{
    m_waveReader.reset();
    Release();
}

bool FrameSmithWrapper::Initial()
{
    return FrameSmith_Initial(&m_library, 0, FrameSmithVersion) == 0;
}

void FrameSmithWrapper::Release()
{
    if (m_packetChannel != nullptr) {
        FrameSmith_DeleteChannel(&m_packetChannel);
        m_packetChannel = nullptr;
    }
    DeleteAudioCaptureChannel();
    if (m_library != nullptr) {
        FrameSmith_Release(&m_library);
        m_library = nullptr;
    }
}

bool FrameSmithWrapper::CreateAudioCaptureChannel()
{
    DeleteAudioCaptureChannel();
    FrameSmithCaptureOptions options{};
    options.streamType = StreamType::G711MuLaw;
    options.sampleRate = captureSampleRate;
    options.channels = captureChannels;
    options.constant16 = 1;
    options.samplesPerFrame = samplesPerFrame;
    options.bitsPerSample = captureBitsPerSample;
    options.context = this;
    options.packetCallback = &FrameSmithWrapper::StaticPacketCallback;
    return FrameSmith_CreateAudioCaptureChannel(m_library, &m_captureChannel, &options) == 0;
}

void FrameSmithWrapper::DeleteAudioCaptureChannel()
{
    if (m_captureChannel != nullptr) {
        FrameSmith_DeleteAudioCaptureChannel(&m_captureChannel);
        m_captureChannel = nullptr;
    }
}

bool FrameSmithWrapper::AudioCapturing()
{
    return m_capturing;
}

bool FrameSmithWrapper::StartAudioCapture()
{
    if (m_capturing) {
        return true;
    }
    if (!CreateAudioCaptureChannel()) {
        VOICEDESK_LOG_ERROR("%s, create audio capture channel failed",
                            "FrameSmithWrapper::StartAudioCapture");
        return false;
    }
    if (m_captureChannel != nullptr) {
        SetMicVolume(m_micVolume);
        SetMicMute(m_micMute);
        if (FrameSmith_StartAudioCapture(m_captureChannel) != 0) {
            // The channel stays; the next start replaces it.
            VOICEDESK_LOG_ERROR("%s, start audio capture channel failed",
                                "FrameSmithWrapper::StartAudioCapture");
            return false;
        }
    }
    m_capturing = true;
    return true;
}

void FrameSmithWrapper::StopAudioCapture()
{
    if (!m_capturing) {
        return;
    }
    m_capturing = false;
    if (m_captureChannel != nullptr) {
        if (FrameSmith_StopAudioCapture(m_captureChannel) != 0) {
            VOICEDESK_LOG_ERROR("%s, stop audio capture channel failed",
                                "FrameSmithWrapper::StopAudioCapture");
        }
        DeleteAudioCaptureChannel();
    }
}

void FrameSmithWrapper::SetMicVolume(int volume)
{
    m_micVolume = volume;
    if (m_captureChannel == nullptr) {
        VOICEDESK_LOG_ERROR("%s, set audio capture channel did not create",
                            "FrameSmithWrapper::SetMicVolume");
        return;
    }
    if (FrameSmith_UpdateChannelSettings(m_captureChannel, FrameSmithSettingVolume, volume, 0) != 0) {
        VOICEDESK_LOG_ERROR("%s, set audio capture channel volume failed", "FrameSmithWrapper::SetMicVolume");
    }
}

void FrameSmithWrapper::SetMicMute(bool mute)
{
    m_micMute = mute;
    if (m_captureChannel == nullptr) {
        VOICEDESK_LOG_ERROR("%s, set audio capture channel did not create", "FrameSmithWrapper::SetMicMute");
        return;
    }
    if (FrameSmith_SetAudioCaptureChannelOption(m_captureChannel, FrameSmithOptionMute, mute ? 1 : 0, 0) !=
        0) {
        VOICEDESK_LOG_ERROR("%s, set audio capture channel mute failed", "FrameSmithWrapper::SetMicMute");
    }
}

std::uint32_t FrameSmithWrapper::StaticPacketCallback(void* context, TMediaDataPacketInfo* packet,
                                                      DWORD delay)
{
    if (packet == nullptr) {
        return 0;
    }
    QByteArray dataBuffer;
    const std::uint64_t size = std::uint64_t{packet->Offset} + packet->BitstreamSize;
    // A size that no byte array holds cannot be a packet; it counts as an empty one.
    if (packet->Buffer != nullptr && size <= std::uint64_t{std::numeric_limits<int>::max() / 2}) {
        dataBuffer = QByteArray(reinterpret_cast<const char*>(packet->Buffer), static_cast<int>(size));
    }
    if (context != nullptr) {
        Q_EMIT static_cast<FrameSmithWrapper*>(context)->audioCaptured(packet->StreamType, dataBuffer);
        sleepMilliseconds(pacedMilliseconds(delay));
    }
    return 0;
}

void FrameSmithWrapper::Reset()
{
    m_waveReader->currentPosition = 0;
}

DWORD FrameSmithWrapper::ParseWaveToPacket(TMediaDataPacketInfo* packet, const QString& path)
{
    const QByteArray localPath = path.toLocal8Bit();
    SoundTapWavInfo info{};
    info.path = localPath.constData();
    if (packet == nullptr || SoundTap_GetWAVInfo(&info) < 0) {
        return 0;
    }
    std::free(packet->Buffer);
    packet->Buffer = nullptr;

    WaveReaderState& reader = *m_waveReader;
    reader.sampleRate = info.sampleRate;
    const std::uint32_t position = reader.currentPosition == 0 ? info.dataBegin : reader.nextPosition;
    reader.currentPosition = position;

    reader.closeFile(); // a failed seek leaves it open
    reader.file = std::fopen(localPath.constData(), "rb");
    if (reader.file == nullptr) {
        return 0;
    }
    reader.remaining = info.dataEnd - position;
    if (std::fseek(reader.file, static_cast<long>(position), SEEK_SET) != 0) {
        return 0;
    }
    const std::size_t items = std::fread(reader.readBuffer.data(), 2, samplesPerFrame, reader.file);
    reader.closeFile();
    auto blockSize = static_cast<std::uint32_t>(items * 2);

    reader.nextPosition = position + blockSize;
    const bool atEnd = reader.nextPosition >= info.dataEnd;
    if (atEnd) {
        reader.packetBuffer.fill(0);
        std::memcpy(reader.packetBuffer.data(), reader.readBuffer.data(), blockSize);
        reader.nextPosition = info.dataEnd;
        blockSize = pcmBlockSize;
    } else {
        std::memcpy(reader.packetBuffer.data(), reader.readBuffer.data(), blockSize);
    }

    packet->Buffer = static_cast<std::uint8_t*>(std::malloc(blockSize + packetHeadroom));
    if (packet->Buffer == nullptr) {
        return 0;
    }
    std::uint32_t reportedSize = 0;
    FrameSmith_MakeAudioPacket(m_packetChannel, reader.packetBuffer.data(), blockSize,
                               blockSize + packetHeadroom, &reportedSize, packet);
    if (atEnd) {
        reader.currentPosition = 0; // deliberate: the file repeats
    }
    const std::uint32_t bytesPerSecond = 2 * reader.sampleRate;
    if (bytesPerSecond == 0) {
        return 0;
    }
    return pacedMilliseconds(reportedSize * 1000U / bytesPerSecond);
}
