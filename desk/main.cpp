#include "CommandLine.h"

#include <Console.h>

#include <QCoreApplication>

extern "C" {
#include <libavutil/log.h>
}

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    Console::showUtf8();
    av_log_set_level(AV_LOG_QUIET); // a bad packet is silence, not a message
    QCoreApplication::setApplicationName(QStringLiteral("voicedesk"));
    return runCommandLine(QCoreApplication::arguments());
}
