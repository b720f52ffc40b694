#include "CommandLine.h"

#include <QCoreApplication>

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("voicedesk"));
    return runCommandLine(QCoreApplication::arguments());
}
