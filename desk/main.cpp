#include "CommandLine.h"

#include <QCoreApplication>

extern "C" {
#include <libavutil/log.h>
}

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    av_log_set_level(AV_LOG_QUIET); // a bad packet is silence, not a message
    QCoreApplication::setApplicationName(QStringLiteral("voicedesk"));
    return runCommandLine(QCoreApplication::arguments());
}
