// awkward_talk silent|drop SOUNDFILE: a talk as "voicedesk talk" makes it, to a camera that never opens its
// line, or that loses it after a second.

#include "cli/TalkCommand.h"
#include "system/ProgramEnd.h"
#include "system/ProgramStart.h"
#include "tests/server/AwkwardBackend.h"
#include "tests/support/BuiltLibraries.h"

#include <QCoreApplication>

namespace {

constexpr int packetsOfASecond = 12;
constexpr int answerTimeout = 500; // ms

int run(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    const auto devices = std::make_shared<AwkwardDevices>();
    devices->cameras = {{QStringLiteral("gate"), QStringLiteral("Gate")}};
    devices->opens = arguments.value(1) == QLatin1String("drop");
    devices->losesAfter = packetsOfASecond;
    TalkOptions options;
    options.pluginPath = BuiltLibraries::path("VoiceDesk");
    options.cameraId = QStringLiteral("gate");
    options.sourceFile = arguments.value(2);
    options.answerTimeout = answerTimeout;
    options.server.devices = devices->kinds();
    return TalkCommand(options).run();
}

} // namespace

int main(int argc, char** argv)
{
    prepareProgram();
    endProgram(run(argc, argv));
}
