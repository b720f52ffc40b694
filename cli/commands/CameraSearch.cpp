#include "cli/commands/CameraSearch.h"

#include "cli/InterruptFlag.h"
#include "cli/commands/CommandArguments.h"

#include <QEventLoop>
#include <QTimer>
#include <QUrl>

namespace {

constexpr int interruptInterval = 50; // ms

} // namespace

bool CameraSearch::isForServer(const CommandArguments& arguments)
{
    return arguments.isSet("server") || arguments.isSet("data") || arguments.isSet("simulate");
}

bool CameraSearch::runLoop(QEventLoop& loop)
{
    QTimer looks; // nothing else wakes the loop after Ctrl-C
    QObject::connect(&looks, &QTimer::timeout, &loop, [&loop] {
        if (InterruptFlag::raised()) {
            loop.exit(1);
        }
    });
    looks.start(interruptInterval);
    return loop.exec() == 0;
}

QString CameraSearch::textOf(const QUrl& address)
{
    return address.toString(QUrl::FullyEncoded);
}
