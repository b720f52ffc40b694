#include "system/Console.h"
#include "tools/decode/DecodeCommand.h"

#include <QCoreApplication>

extern "C" {
#include <libavutil/log.h>
}

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    const Console::Utf8Output console;
    av_log_set_level(AV_LOG_QUIET); // a bad packet is named by this program
    return runDecodeCommand(QCoreApplication::arguments());
}
