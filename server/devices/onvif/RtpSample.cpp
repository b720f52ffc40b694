#include "server/devices/onvif/RtpSample.h"

#include <gst/rtp/gstrtpbuffer.h>

#include <chrono>
#include <cstring>

namespace {

std::uint64_t steadyMicroseconds()
{
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return static_cast<std::uint64_t>(std::chrono::duration_cast<std::chrono::microseconds>(now).count());
}

} // namespace

std::optional<RtpVoice> RtpSample::read(GstSample* sample)
{
    GstRTPBuffer rtp = GST_RTP_BUFFER_INIT;
    if (gst_rtp_buffer_map(gst_sample_get_buffer(sample), GST_MAP_READ, &rtp) == FALSE) {
        return std::nullopt;
    }
    RtpVoice voice;
    voice.payload = QByteArray(static_cast<const char*>(gst_rtp_buffer_get_payload(&rtp)),
                               static_cast<int>(gst_rtp_buffer_get_payload_len(&rtp)));
    voice.timestamp = gst_rtp_buffer_get_timestamp(&rtp);
    voice.sequence = gst_rtp_buffer_get_seq(&rtp);
    voice.marker = gst_rtp_buffer_get_marker(&rtp) != FALSE;
    voice.payloadType = gst_rtp_buffer_get_payload_type(&rtp);
    voice.time = steadyMicroseconds();
    gst_rtp_buffer_unmap(&rtp);
    return voice;
}

GstSample* RtpSample::make(const RtpPayload& payload, const Header& header)
{
    const auto size = static_cast<guint>(payload.bytes.size());
    GstBuffer* buffer = gst_rtp_buffer_new_allocate(size, 0, 0);
    GstRTPBuffer rtp = GST_RTP_BUFFER_INIT;
    if (gst_rtp_buffer_map(buffer, GST_MAP_WRITE, &rtp) == FALSE) {
        gst_buffer_unref(buffer);
        return nullptr;
    }
    gst_rtp_buffer_set_payload_type(&rtp, static_cast<guint8>(header.payloadType));
    gst_rtp_buffer_set_seq(&rtp, header.sequence);
    gst_rtp_buffer_set_timestamp(&rtp, header.timeOffset + payload.timestamp);
    gst_rtp_buffer_set_ssrc(&rtp, header.ssrc);
    gst_rtp_buffer_set_marker(&rtp, payload.marker ? TRUE : FALSE);
    std::memcpy(gst_rtp_buffer_get_payload(&rtp), payload.bytes.constData(), size);
    gst_rtp_buffer_unmap(&rtp);
    GstCaps* caps = gst_caps_new_empty_simple("application/x-rtp");
    GstSample* sample = gst_sample_new(buffer, caps, nullptr, nullptr);
    gst_caps_unref(caps);
    gst_buffer_unref(buffer);
    return sample;
}
