#include "system/ProgramStart.h"

#include <QByteArray>

namespace {

void setUnlessSet(const char* name, const QByteArray& value)
{
    if (!qEnvironmentVariableIsSet(name)) {
        qputenv(name, value);
    }
}

} // namespace

void prepareProgram()
{
    // Qt leaves the size of the output's queue to libpulse, which takes 250 ms and lets the sink take as much
    // again. With 80 ms a packet is heard 46 to 71 ms after it came in, not 270 to 430; with 50 and less
    // nothing is ever heard.
    setUnlessSet("PULSE_LATENCY_MSEC", "80");
    // To read how long a sound file is, Qt's player looks for video outputs first: for seconds, without a
    // video card.
    setUnlessSet("QT_GSTREAMER_WIDGET_VIDEOSINK", "fakesink");
    setUnlessSet("QT_GSTREAMER_WINDOW_VIDEOSINK", "fakesink");
}
