// Any RTP payloads of a camera, in any of its codecs. The first byte chooses the format, the second how long
// the payloads are.

#include "protocol/Words.h"
#include "server/devices/onvif/RtpDecoder.h"

#include <algorithm>
#include <array>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const std::array<RtpFormat, 8> formats{{
        {"PCMU", 0, 8000},
        {"PCMA", 8, 8000},
        {"G726-16", 96, 8000},
        {"G726-24", 96, 8000},
        {"AAL2-G726-40", 96, 8000},
        {"L16", 96, 16000, 2},
        {"MPEG4-GENERIC", 97, 16000, 1, 13, 3, 3, QByteArray::fromHex("1408")},
        {"MPEG4-GENERIC", 97, 48000, 1, 6, 2, 2, QByteArray::fromHex("1190")},
    }};
    if (size < 2) {
        return 0;
    }
    RtpFormat format = formats[data[0] % formats.size()];
    if (data[0] > 127) { // any configuration
        format.config =
            QByteArray(reinterpret_cast<const char*>(data), static_cast<int>(std::min<std::size_t>(size, 8)));
        format.sizeLength = data[0] % 20;
    }
    const auto decoder = RtpDecoder::create(format);
    const std::size_t step = data[1] * 4U + 1U;
    std::vector<VoicePacket> out;
    for (std::size_t at = 2; decoder && at < size; at += step) {
        const auto length = static_cast<int>(std::min(step, size - at));
        out.clear();
        decoder->decode({QByteArray(reinterpret_cast<const char*>(data + at), length),
                         static_cast<std::uint32_t>(at * data[1] * 7919U), false, at},
                        out);
        for (const VoicePacket& packet : out) {
            const QVariantMap fields = packet.toFields();
            if (packet.bitstream.isEmpty() ||
                (fields[Words::Offset].toUInt() + fields[Words::BitstreamSize].toUInt()) % 3 != 0) {
                std::abort();
            }
        }
    }
    return 0;
}
