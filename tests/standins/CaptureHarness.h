#pragma once

#include "audio/PacketHeader.h"
#include "platform/FrameSmith.h"

#include <QByteArray>

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

/** A library, a capture channel and the packets that it delivers, as the plug-in uses them. */
class CaptureHarness
{
public:
    struct Packet
    {
        QByteArray bytes;
        std::uint32_t offset;
        std::uint32_t bitstreamSize;
        std::uint32_t streamType;
        std::uint32_t sampleRate;
        int channels;
        DWORD delay;
        std::chrono::steady_clock::time_point time;

        QByteArray bitstream() const { return bytes.mid(static_cast<int>(offset)); }
        std::uint32_t position() const
        {
            const auto* data = reinterpret_cast<const std::uint8_t*>(bytes.constData());
            return PacketHeader::fromBytes(data, static_cast<std::size_t>(bytes.size()))->position;
        }
    };

    CaptureHarness()
    {
        FrameSmith_Initial(&library, 0, FrameSmithVersion);
        const auto options = captureOptions(this);
        created = FrameSmith_CreateAudioCaptureChannel(library, &channel, &options);
    }

    ~CaptureHarness()
    {
        FrameSmith_DeleteAudioCaptureChannel(&channel);
        FrameSmith_Release(&library);
    }

    CaptureHarness(const CaptureHarness&) = delete;
    CaptureHarness& operator=(const CaptureHarness&) = delete;

    static FrameSmithCaptureOptions captureOptions(void* context)
    {
        FrameSmithCaptureOptions options{};
        options.streamType = 8192;
        options.sampleRate = 8000;
        options.channels = 1;
        options.constant16 = 1;
        options.samplesPerFrame = 640;
        options.bitsPerSample = 16;
        options.context = context;
        options.packetCallback = &CaptureHarness::callback;
        return options;
    }

    /** Waits for this many packets; false after @p timeout. */
    bool waitForPackets(std::size_t count, std::chrono::seconds timeout = std::chrono::seconds(20))
    {
        std::unique_lock lock(mutex);
        return condition.wait_for(lock, timeout, [&] { return packets.size() >= count; });
    }

    std::vector<Packet> taken()
    {
        const std::lock_guard lock(mutex);
        return packets;
    }

    FrameSmithHandle library = nullptr;
    FrameSmithHandle channel = nullptr;
    std::int32_t created = -1;
    std::function<void(std::size_t)> inCallback; ///< Called on the library's thread with the packet's number.

private:
    static std::uint32_t callback(void* context, TMediaDataPacketInfo* packet, DWORD delay)
    {
        auto* self = static_cast<CaptureHarness*>(context);
        std::size_t number = 0;
        {
            const std::lock_guard lock(self->mutex);
            number = self->packets.size();
            self->packets.push_back({QByteArray(reinterpret_cast<const char*>(packet->Buffer),
                                                static_cast<int>(packet->Offset + packet->BitstreamSize)),
                                     packet->Offset, packet->BitstreamSize, packet->StreamType,
                                     packet->AudioSamplingFreq, packet->AudioChannelNum, delay,
                                     std::chrono::steady_clock::now()});
            self->condition.notify_all();
        }
        if (self->inCallback) {
            self->inCallback(number);
        }
        return 0;
    }

    std::mutex mutex;
    std::condition_variable condition;
    std::vector<Packet> packets;
};
