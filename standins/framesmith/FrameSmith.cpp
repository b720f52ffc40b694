// The C interface: handles, checks of arguments, and the choice of where captured sound comes from.

#include "platform/FrameSmith.h"
#include "lifetime/ApplicationEnd.h"
#include "lifetime/NeverDestroyed.h"
#include "src/vocabulary/StreamType.h"
#include "standins/framesmith/CaptureChannel.h"
#include "standins/framesmith/FrameSmithErrors.h"
#include "standins/framesmith/HandleTable.h"
#include "standins/framesmith/MicrophoneSource.h"
#include "standins/framesmith/PacketMaker.h"
#include "standins/framesmith/WaveFileSource.h"

#include <QtGlobal>

#include <atomic>
#include <cstring>
#include <vector>

using namespace framesmith;

namespace {

constexpr std::uint32_t sampleRate = 8000; // Hz
constexpr std::uint32_t maxSamplesPerFrame = 8000;
constexpr std::uint32_t bitsPerSample = 16;

struct Library
{
    std::atomic<int> openChannels = 0;
};

/** Counts a channel in its library for as long as the channel exists. */
class ChannelCount
{
public:
    explicit ChannelCount(std::shared_ptr<Library> library) : m_library(std::move(library))
    {
        ++m_library->openChannels;
    }
    ~ChannelCount() { --m_library->openChannels; }
    ChannelCount(const ChannelCount&) = delete;
    ChannelCount& operator=(const ChannelCount&) = delete;

private:
    std::shared_ptr<Library> m_library;
};

struct PacketChannel
{
    explicit PacketChannel(std::shared_ptr<Library> library) : count(std::move(library)) {}

    ChannelCount count;
    std::mutex mutex; // one packet is made at a time
    PacketMaker maker;
};

struct MicrophoneChannel
{
    MicrophoneChannel(std::shared_ptr<Library> library, const FrameSmithCaptureOptions& options,
                      CaptureChannel::SourceFactory makeSource)
        : count(std::move(library)), capture(options, std::move(makeSource))
    {
    }

    ChannelCount count;
    CaptureChannel capture;
};

// A client may release its handles as late as by static objects of its own: the tables are never destroyed.

HandleTable<Library>& libraries()
{
    static NeverDestroyed<HandleTable<Library>> table(1U);
    return table.value;
}

HandleTable<PacketChannel>& packetChannels()
{
    static NeverDestroyed<HandleTable<PacketChannel>> table(2U);
    return table.value;
}

HandleTable<MicrophoneChannel>& microphoneChannels()
{
    static NeverDestroyed<HandleTable<MicrophoneChannel>> table(3U);
    return table.value;
}

/** No thread of this library outlives the application object, without which Qt's sound does not work. */
void endCaptures()
{
    for (const auto& channel : microphoneChannels().all()) {
        channel->capture.end();
    }
}

std::unique_ptr<CaptureSource> makeSource()
{
    const QString file = qEnvironmentVariable("FRAMESMITH_CAPTURE_FILE");
    if (!file.isEmpty()) {
        return std::make_unique<WaveFileSource>(file);
    }
    return std::make_unique<MicrophoneSource>(qEnvironmentVariable("FRAMESMITH_CAPTURE_DEVICE"));
}

template<typename Options>
bool formatSupported(const Options& options)
{
    return options.streamType == StreamType::G711MuLaw && options.sampleRate == sampleRate &&
           options.channels == 1 && options.samplesPerFrame >= 1 &&
           options.samplesPerFrame <= maxSamplesPerFrame;
}

} // namespace

std::int32_t FrameSmith_Initial(FrameSmithHandle* library, std::uint32_t reserved, std::uint32_t version)
{
    if (library == nullptr || reserved != 0) {
        return InvalidArgument;
    }
    if (version != FrameSmithVersion) {
        return UnsupportedVersion;
    }
    *library = libraries().add(std::make_shared<Library>());
    return Success;
}

std::int32_t FrameSmith_Release(FrameSmithHandle* library)
{
    if (library == nullptr) {
        return InvalidArgument;
    }
    const auto object = libraries().find(*library);
    if (!object) {
        return InvalidHandle;
    }
    if (object->openChannels != 0) {
        return WrongState;
    }
    libraries().remove(*library);
    *library = nullptr;
    return Success;
}

std::int32_t FrameSmith_CreateChannel(FrameSmithHandle library, FrameSmithHandle* channel,
                                      const FrameSmithChannelOptions* options)
{
    const auto object = libraries().find(library);
    if (!object) {
        return InvalidHandle;
    }
    if (channel == nullptr || options == nullptr || !formatSupported(*options)) {
        return InvalidArgument;
    }
    *channel = packetChannels().add(std::make_shared<PacketChannel>(object));
    return Success;
}

std::int32_t FrameSmith_DeleteChannel(FrameSmithHandle* channel)
{
    if (channel == nullptr) {
        return InvalidArgument;
    }
    if (!packetChannels().find(*channel)) {
        return InvalidHandle;
    }
    packetChannels().remove(*channel);
    *channel = nullptr;
    return Success;
}

std::int32_t FrameSmith_CreateAudioCaptureChannel(FrameSmithHandle library, FrameSmithHandle* channel,
                                                  const FrameSmithCaptureOptions* options)
{
    const auto object = libraries().find(library);
    if (!object) {
        return InvalidHandle;
    }
    if (channel == nullptr || options == nullptr || !formatSupported(*options) ||
        options->bitsPerSample != bitsPerSample || options->packetCallback == nullptr) {
        return InvalidArgument;
    }
    *channel = microphoneChannels().add(std::make_shared<MicrophoneChannel>(object, *options, makeSource));
    return Success;
}

std::int32_t FrameSmith_DeleteAudioCaptureChannel(FrameSmithHandle* channel)
{
    if (channel == nullptr) {
        return InvalidArgument;
    }
    const auto object = microphoneChannels().find(*channel);
    if (!object) {
        return InvalidHandle;
    }
    if (object->capture.stop() == WrongThread) {
        return WrongThread;
    }
    microphoneChannels().remove(*channel);
    *channel = nullptr;
    return Success;
}

std::int32_t FrameSmith_StartAudioCapture(FrameSmithHandle channel)
{
    const auto object = microphoneChannels().find(channel);
    if (!object) {
        return InvalidHandle;
    }
    const Code code = object->capture.start();
    if (code == Success) {
        // Made when the microphone has been opened: what Qt's sound has of static objects outlives this one.
        static ApplicationEnd applicationEnd(endCaptures);
        applicationEnd.arm();
    }
    return code;
}

std::int32_t FrameSmith_StopAudioCapture(FrameSmithHandle channel)
{
    const auto object = microphoneChannels().find(channel);
    return object ? object->capture.stop() : InvalidHandle;
}

std::int32_t FrameSmith_UpdateChannelSettings(FrameSmithHandle channel, std::uint32_t setting,
                                              std::int32_t value, std::uint32_t /*reserved*/)
{
    const auto object = microphoneChannels().find(channel);
    if (!object) {
        return InvalidHandle;
    }
    if (setting != FrameSmithSettingVolume || value < 0 || value > CaptureChannel::maxVolume) {
        return InvalidArgument;
    }
    object->capture.setVolume(value);
    return Success;
}

std::int32_t FrameSmith_SetAudioCaptureChannelOption(FrameSmithHandle channel, std::uint32_t option,
                                                     std::int32_t value, std::uint32_t /*reserved*/)
{
    const auto object = microphoneChannels().find(channel);
    if (!object) {
        return InvalidHandle;
    }
    if (option != FrameSmithOptionMute || value < 0 || value > 1) {
        return InvalidArgument;
    }
    object->capture.setMute(value == 1);
    return Success;
}

std::int32_t FrameSmith_MakeAudioPacket(FrameSmithHandle channel, const void* pcm, std::uint32_t pcmSize,
                                        std::uint32_t bufferSize, std::uint32_t* reportedSize,
                                        TMediaDataPacketInfo* packet)
{
    const auto object = packetChannels().find(channel);
    if (!object) {
        return InvalidHandle;
    }
    const std::size_t count = pcmSize / sizeof(std::int16_t);
    if (pcm == nullptr || reportedSize == nullptr || packet == nullptr || packet->Buffer == nullptr ||
        pcmSize % sizeof(std::int16_t) != 0 || count == 0 || count > maxSamplesPerFrame) {
        return InvalidArgument;
    }
    if (bufferSize < PacketMaker::packetSize(count)) {
        return BufferTooSmall;
    }
    std::vector<std::int16_t> samples(count); // the caller's block need not be aligned
    std::memcpy(samples.data(), pcm, pcmSize);
    const std::lock_guard lock(object->mutex);
    if (!object->maker.make(samples.data(), count, *packet)) {
        return CodecFailed;
    }
    *reportedSize = pcmSize;
    return Success;
}
