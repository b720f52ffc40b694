#pragma once

#include "src/MediaPacket.h"
#include "src/VoiceDeskExport.h"

#include <memory>

class AudioDevice;
class AudioOutput;

/**
 * The front of the playback path: picks an output device for a stream, builds the AudioDevice and the
 * AudioOutput for it, builds them anew when the stream's format changes, and queues its packets.
 *
 *   off -- SetAudioOn(true) --> armed -- first packet --> playing, or mute where no device suits
 *
 * The end of a stream stops nothing: the output plays silence until the format changes. The end of the
 * application object closes it, too; packets are dropped then, until there is another application.
 * Nothing is reported: a failure is heard as silence. All calls on one thread, on which the application ends,
 * too.
 */
class VOICEDESK_EXPORT AudioRenderer
{
public:
    AudioRenderer();
    ~AudioRenderer();
    AudioRenderer(const AudioRenderer&) = delete;
    AudioRenderer& operator=(const AudioRenderer&) = delete;

    /** Queues a packet; nothing happens while audio is off. @param dropWhenFull see AudioDevice::Push */
    void Play(const boost::intrusive_ptr<_TMediaDataPacketInfoV3>& packet, bool dropWhenFull);

    enum class State
    {
        Off,
        Armed, ///< On; the next packet picks a device.
        Playing,
        MuteSink, ///< No device suits the stream; its packets are dropped.
    };
    State state() const;

    /** The volume as last set; once an output has taken it, as that output says. */
    double volume() const;

    /** Allows or ends playback. */
    void SetAudioOn(bool on);

    /** Sets the volume, which the output limits to 0.0 to 1.0; kept for the outputs to come. */
    void SetVolume(double volume);

private:
    static void closeAll();
    void closeDevice();
    void closeWithApplication();
    void openDevice(const _TMediaDataPacketInfoV3& packet);
    void applyVolume(double volume);

    // The output stands behind the device: its thread ends before what it reads goes away.
    std::unique_ptr<AudioDevice> m_device;
    std::unique_ptr<AudioOutput> m_output;
    bool m_audioOn = false;
    double m_volume = 1.0;
};
