#include "cli/CommandLine.h"
#include "system/Console.h"
#include "system/ProgramEnd.h"
#include "system/ProgramStart.h"

#include <QCoreApplication>

#include <clocale>

extern "C" {
#include <libavutil/log.h>
}

namespace {

int run(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    std::setlocale(LC_NUMERIC, "C"); // one decimal sign in all output and input, whatever the language
    const Console::Utf8Output console;
    av_log_set_level(AV_LOG_QUIET); // a bad packet is silence, not a message
    QCoreApplication::setApplicationName(QStringLiteral("voicedesk"));
    return runCommandLine(QCoreApplication::arguments());
}

} // namespace

int main(int argc, char** argv)
{
    prepareProgram();
    endProgram(run(argc, argv));
}
