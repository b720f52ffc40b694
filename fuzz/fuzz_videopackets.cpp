// Any RTP packets of a camera's video: what comes out begins with a key frame, is bounded, and continues with
// one after a loss. Each packet has a byte of flags and one for its length in front.

#include "protocol/Limits.h"
#include "server/devices/onvif/H264Assembler.h"

#include <algorithm>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    constexpr int markerFlag = 1;
    constexpr int nextFlag = 2;
    constexpr int gapFlag = 4;
    constexpr int longFlag = 8;  // the packet is repeated up to 64 KiB
    constexpr int waitFlag = 16; // a second passes
    const auto text = [&](std::size_t at, std::size_t length) {
        return QByteArray(reinterpret_cast<const char*>(data + at), static_cast<int>(length));
    };
    H264Assembler assembler({text(0, std::min<std::size_t>(size, 4))});
    RtpVoice packet;
    std::vector<VideoUnit> units;
    bool mayGoOn = false;
    for (std::size_t at = 0; at + 2 <= size;) {
        const int flags = data[at];
        const std::size_t length = std::min<std::size_t>(data[at + 1], size - at - 2);
        packet.payload = text(at + 2, length);
        while ((flags & longFlag) != 0 && !packet.payload.isEmpty() && packet.payload.size() < 60000) {
            packet.payload += packet.payload;
        }
        packet.marker = (flags & markerFlag) != 0;
        packet.timestamp += (flags & nextFlag) != 0 ? 3600 : 0;
        packet.sequence = static_cast<std::uint16_t>(packet.sequence + ((flags & gapFlag) != 0 ? 2 : 1));
        packet.time += (flags & waitFlag) != 0 ? 1000000 : 1000;
        units.clear();
        assembler.add(packet, units);
        for (const VideoUnit& unit : units) {
            mayGoOn = mayGoOn || unit.isKeyFrame;
            if (!mayGoOn || unit.bytes.isEmpty() || unit.bytes.size() > Limits::maxVideoUnitBytes ||
                unit.position < 0) {
                std::abort();
            }
        }
        mayGoOn = mayGoOn && (flags & gapFlag) == 0;
        at += 2 + length;
    }
    return 0;
}
