#pragma once

#include "src/MediaPacket.h"
#include "src/VoiceDeskExport.h"

#include <memory>

class AudioDevice;
class AudioOutput;

/**
 * The entry to the playback path: picks an output device for a stream, makes the AudioDevice and the
 * AudioOutput for it, makes new ones when the stream's format changes, and queues its packets.
 *
 *   off -- SetAudioOn(true) --> armed -- first packet --> playing, or mute where no device suits
 *
 * The end of a stream does not stop the output: it plays silence until the format changes. The end of the
 * application object closes the output; packets are then dropped until there is another application.
 * A failure is not reported, but heard as silence. All calls are on one thread, on which the application
 * object ends, too.
 */
class VOICEDESK_EXPORT AudioRenderer
{
public:
    /** Makes a renderer whose audio is off, with the volume 1.0. */
    AudioRenderer();
    /** Stops the output and drops its packets. */
    ~AudioRenderer();
    AudioRenderer(const AudioRenderer&) = delete;
    AudioRenderer& operator=(const AudioRenderer&) = delete;

    /**
     * Queues a packet. The first packet, and one of another format, makes an output before it returns. Does
     * nothing while audio is off.
     *
     * @param packet       may be null
     * @param dropWhenFull whether a full queue drops the packet; otherwise the call waits for room
     */
    void Play(const boost::intrusive_ptr<_TMediaDataPacketInfoV3>& packet, bool dropWhenFull);

    /** States of playback. */
    enum class State
    {
        Off,      ///< Packets are dropped.
        Armed,    ///< On; the next packet picks a device.
        Playing,  ///< There is an output.
        MuteSink, ///< No device suits the stream; its packets are dropped.
    };

    /** Returns the state. */
    State state() const;

    /** Returns the volume as last set; with an output, the value that the output has taken. */
    double volume() const;

    /** Switches playback on or off; off stops the output and drops its packets. */
    void SetAudioOn(bool on);

    /** Sets the volume, which the output limits to 0.0 to 1.0; stored for later outputs. */
    void SetVolume(double volume);

private:
    static void closeAll();
    void closeDevice();
    void closeWithApplication();
    void openDevice(const _TMediaDataPacketInfoV3& packet);
    void applyVolume(double volume);

    // The output comes after the device: its thread ends before the device that it reads is deleted.
    std::unique_ptr<AudioDevice> m_device;
    std::unique_ptr<AudioOutput> m_output;
    bool m_audioOn = false;
    double m_volume = 1.0;
};
