#pragma once

#include "platform/FrameSmith.h"
#include "src/VoiceDeskExport.h"

#include <QByteArray>
#include <QObject>
#include <QString>

#include <cstdint>
#include <memory>

struct WaveReaderState;

/**
 * The plug-in's only way to the capture library: one packet channel for as long as the object lives, and a
 * microphone capture channel between a start and a stop of capture.
 *
 *   microphone --> library's thread --> StaticPacketCallback --> audioCaptured --> (queued) plug-in's thread
 *
 * All operations but StaticPacketCallback run on the plug-in's thread. Captured packets are G.711
 * mu-law at 8000 Hz mono, 640 samples each. Failures end in a false result and in the log.
 */
class VOICEDESK_EXPORT FrameSmithWrapper : public QObject
{
    Q_OBJECT

public:
    FrameSmithWrapper();
    ~FrameSmithWrapper() override;

    // The order of the virtual operations is part of the class's interface.

    /** Makes the next call of ParseWaveToPacket start at the file's first sample. */
    virtual void Reset();

    /** Returns whether capture runs. */
    virtual bool AudioCapturing();

    /** Starts the microphone with the stored volume and mute. Returns whether capture runs now. */
    virtual bool StartAudioCapture();

    /** Stops the microphone; does nothing when it does not run. */
    virtual void StopAudioCapture();

    /** Stores the volume, 0 to 100, and applies it to a running capture. Not limited here. */
    virtual void SetMicVolume(int volume);

    /** Stores the mute switch and applies it to a running capture. */
    virtual void SetMicMute(bool mute);

    /**
     * Makes a packet of the next 640 samples of a WAV file of 16-bit samples. The file repeats without end.
     *
     * @param packet record to fill; its Buffer is replaced by a block from malloc that the caller frees
     * @param path   the file; opened and closed in each call
     * @return milliseconds to wait before the next call, 0 on failure
     */
    virtual DWORD ParseWaveToPacket(TMediaDataPacketInfo* packet, const QString& path);

Q_SIGNALS:
    /** Emitted for each captured packet, header included, on a thread of the library. */
    void audioCaptured(DWORD type, QByteArray dataBuffer);

private:
    static std::uint32_t StaticPacketCallback(void* context, TMediaDataPacketInfo* packet, DWORD delay);

    bool Initial();
    void Release();
    bool CreateAudioCaptureChannel();
    void DeleteAudioCaptureChannel();

    bool m_capturing = false;
    FrameSmithHandle m_library = nullptr;
    FrameSmithHandle m_captureChannel = nullptr;
    std::int32_t m_micVolume = 50;
    bool m_micMute = false;
    FrameSmithHandle m_packetChannel = nullptr;
    std::unique_ptr<WaveReaderState> m_waveReader;
};
