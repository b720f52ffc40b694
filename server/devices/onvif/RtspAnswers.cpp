#include "server/devices/onvif/RtspAnswers.h"

#include <gst/gst.h>
#include <gst/rtsp/gstrtspextension.h>

namespace {

GstRTSPResult afterSend(GstRTSPExtension* /*extension*/, GstRTSPMessage* request, GstRTSPMessage* answer)
{
    GstRTSPMethod method = GST_RTSP_INVALID;
    gst_rtsp_message_parse_request(request, &method, nullptr, nullptr);
    GstRTSPStatusCode& status = answer->type_data.response.code;
    const bool isUnknown =
        status == GST_RTSP_STS_METHOD_NOT_ALLOWED || status == GST_RTSP_STS_NOT_IMPLEMENTED;
    if ((method == GST_RTSP_PLAY || method == GST_RTSP_RECORD) && isUnknown) {
        status = GST_RTSP_STS_METHOD_NOT_VALID_IN_THIS_STATE;
    }
    return GST_RTSP_OK;
}

void initClass(gpointer type, gpointer /*data*/)
{
    // rtspsrc knows its extensions by this class.
    gst_element_class_set_static_metadata(static_cast<GstElementClass*>(type), "Answers of cameras",
                                          "Network/Extension/Protocol",
                                          "Tells that a camera does not know a method", "VoiceDesk");
}

void initInterface(gpointer interface, gpointer /*data*/)
{
    static_cast<GstRTSPExtensionInterface*>(interface)->after_send = afterSend;
}

} // namespace

void RtspAnswers::install()
{
    const GType type =
        g_type_register_static_simple(GST_TYPE_ELEMENT, "VoiceDeskRtspAnswers", sizeof(GstElementClass),
                                      initClass, sizeof(GstElement), nullptr, static_cast<GTypeFlags>(0));
    const GInterfaceInfo info{initInterface, nullptr, nullptr};
    g_type_add_interface_static(type, GST_TYPE_RTSP_EXTENSION, &info);
    gst_element_register(nullptr, "voicedeskrtspanswers", GST_RANK_PRIMARY, type);
}
