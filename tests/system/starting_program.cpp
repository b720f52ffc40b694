// Shows what a program with sound finds in its environment.

#include "system/ProgramStart.h"

#include <QByteArray>

#include <cstdio>

int main()
{
    prepareProgram();
    for (const char* name :
         {"PULSE_LATENCY_MSEC", "QT_GSTREAMER_WIDGET_VIDEOSINK", "QT_GSTREAMER_WINDOW_VIDEOSINK"}) {
        std::printf("%s=%s\n", name, qgetenv(name).constData());
    }
    return 0;
}
