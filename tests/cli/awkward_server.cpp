// awkward_server silent|drop: a server with a camera "gate" that never opens its line, or that loses it after
// a second. Prints its address, and runs until its input ends. Its token is "right".

#include "server/RecordingServer.h"
#include "server/access/SocketServer.h"
#include "tests/server/AwkwardBackend.h"

#include <QCoreApplication>

#include <cstdio>
#include <thread>

namespace {

constexpr int packetsOfASecond = 12;

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    const auto devices = std::make_shared<AwkwardDevices>();
    devices->cameras = {{QStringLiteral("gate"), QStringLiteral("Gate")}};
    devices->opens = QCoreApplication::arguments().value(1) == QLatin1String("drop");
    devices->losesAfter = packetsOfASecond;
    ServerConfig config;
    config.devices = devices->kinds();
    RecordingServer server(config);
    SocketConfig socket;
    socket.users.setPassword(QString(), QStringLiteral("right"));
    SocketServer sockets(server, socket, nullptr);
    if (!sockets.listen()) {
        return 1;
    }
    std::printf("%s\n", qUtf8Printable(sockets.url().toString()));
    std::fflush(stdout);
    std::thread untilTheEnd([] {
        while (std::getchar() != EOF) {
        }
        QMetaObject::invokeMethod(QCoreApplication::instance(), &QCoreApplication::quit,
                                  Qt::QueuedConnection);
    });
    const int status = QCoreApplication::exec();
    untilTheEnd.join();
    return status;
}
