#pragma once

#include "audio/PacketDecoder.h"
#include "audio/WaveFileWriter.h"
#include "server/devices/TalkTarget.h"
#include "server/devices/simulated/CameraVoice.h"

#include <QString>

#include <memory>

/** What a simulated camera is and how it behaves. */
struct CameraConfig
{
    QString id;
    QString name;
    bool online = true;       ///< An offline camera refuses every talk.
    int dropAfterPackets = 0; ///< Loses the talk after so many packets; 0 for never.
    CameraVoiceConfig voice{};
};

/** One talk with a simulated camera: what is said is decoded, written to a WAV file, and perhaps answered. */
class CameraTalk : public TalkTarget
{
public:
    /** @param path the recording; replaced when it exists */
    CameraTalk(const QString& path, const CameraVoiceConfig& voice);

    bool isRecording() const { return m_writer.isOpen(); }
    const QString& path() const { return m_path; }
    /** What the camera says. */
    CameraVoice& voice() { return m_voice; }

    bool hear(const QByteArray& packet) override;

private:
    QString m_path;
    WaveFileWriter m_writer;
    PacketDecoder m_decoder;
    CameraVoice m_voice;
    int m_packets = 0;
    std::uint32_t m_nextPosition = 0; ///< Where the next packet starts if none is lost.
    std::uint64_t m_recorded = 0;     ///< Samples written.
};

/** A camera that can be talked to. Talks of one camera are independent of each other. */
class SimulatedCamera
{
public:
    SimulatedCamera(CameraConfig config, QString directory);

    const CameraConfig& config() const { return m_config; }

    /** Starts a talk that is recorded to a new file of its own; null when that cannot be created. */
    std::unique_ptr<CameraTalk> openTalk();

private:
    CameraConfig m_config;
    QString m_directory;
};
