#pragma once

#include <gst/gst.h>

#include <memory>

/** Gives up a reference to what GStreamer counts. */
struct GstDeleter
{
    void operator()(GstElement* element) const { gst_object_unref(element); }
    void operator()(GstPad* pad) const { gst_object_unref(pad); }
    void operator()(GstBus* bus) const { gst_object_unref(bus); }
    void operator()(GstCaps* caps) const { gst_caps_unref(caps); }
    void operator()(GstSample* sample) const { gst_sample_unref(sample); }
    void operator()(GstMessage* message) const { gst_message_unref(message); }
    void operator()(char* text) const { g_free(text); }
    void operator()(GError* error) const { g_error_free(error); }
};

/** The owner of one reference. */
template<class Object>
using GstPtr = std::unique_ptr<Object, GstDeleter>;
