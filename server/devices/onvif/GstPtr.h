#pragma once

#include <gio/gio.h>
#include <gst/gst.h>

#include <memory>

/** Gives up a reference to what GStreamer counts. */
struct GstDeleter
{
    /** Releases a GstElement. */
    void operator()(GstElement* element) const { gst_object_unref(element); }
    /** Releases a GstPad. */
    void operator()(GstPad* pad) const { gst_object_unref(pad); }
    /** Releases a GstBus. */
    void operator()(GstBus* bus) const { gst_object_unref(bus); }
    /** Releases a GstCaps. */
    void operator()(GstCaps* caps) const { gst_caps_unref(caps); }
    /** Releases a GstSample. */
    void operator()(GstSample* sample) const { gst_sample_unref(sample); }
    /** Releases a GstMessage. */
    void operator()(GstMessage* message) const { gst_message_unref(message); }
    /** Releases a GSocket. */
    void operator()(GSocket* socket) const { g_object_unref(socket); }
    /** Releases a text of GLib. */
    void operator()(char* text) const { g_free(text); }
    /** Releases a GError. */
    void operator()(GError* error) const { g_error_free(error); }
};

/** The owner of one reference. */
template<class Object>
using GstPtr = std::unique_ptr<Object, GstDeleter>;
