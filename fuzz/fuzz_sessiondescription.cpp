// Any bytes as a camera's session description: bounded, with names for people, and with no format that an
// encoder or a decoder could not be made for and used with.

#include "server/devices/onvif/RtpDecoder.h"
#include "server/devices/onvif/RtpEncoder.h"
#include "server/devices/onvif/StreamChoice.h"

#include <algorithm>
#include <cstdlib>

namespace {

void check(bool good)
{
    if (!good) {
        std::abort();
    }
}

void use(const RtpFormat& format)
{
    check(!format.encoding.isEmpty() && format.encoding.size() <= SdpFormats::maxName);
    if (const auto decoder = RtpDecoder::create(format)) {
        std::vector<VoicePacket> packets;
        decoder->decode({QByteArray(200, '\x55'), 1, false, 0}, packets);
    }
    const auto encoder = RtpEncoder::existsFor(format) ? RtpEncoder::create(format, 20) : nullptr;
    if (encoder) {
        std::vector<RtpPayload> payloads;
        encoder->encode(0, 0, QByteArray(640, '\x55'), payloads);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    GstSDPMessage* description = nullptr;
    gst_sdp_message_new(&description);
    if (gst_sdp_message_parse_buffer(data, static_cast<guint>(size), description) == GST_SDP_OK) {
        const auto sounds = SdpFormats::soundsOf(description);
        check(sounds.size() <= SdpFormats::maxSounds);
        for (const SdpFormats::Sound& sound : sounds) {
            check(sound.formats.size() <= SdpFormats::maxFormats);
            std::for_each(sound.formats.begin(), sound.formats.end(), use);
        }
        const StreamChoice choice = StreamChoice::of(sounds, QString());
        check(!choice.talkFormat || RtpEncoder::create(*choice.talkFormat, 80) != nullptr);
        check(std::all_of(choice.offered.begin(), choice.offered.end(),
                          [](QChar letter) { return letter.unicode() < 128 && letter.isPrint(); }));
    }
    gst_sdp_message_free(description);
    return 0;
}

extern "C" int LLVMFuzzerInitialize(int* /*count*/, char*** /*words*/)
{
    gst_init(nullptr, nullptr);
    return 0;
}
