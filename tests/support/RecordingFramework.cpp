#include "tests/support/RecordingFramework.h"

void RecordingFramework::reservedOperation()
{
    qFatal("the plug-in must not call the host's first operation");
}

bool RecordingFramework::SendCommand(void* pluginHandle, const QString& pluginId, const QString& command,
                                     const QVariant& param, void* userData, bool flag, const QString& extra)
{
    commands.push_back({pluginHandle, pluginId, command, param, userData, flag, extra});
    if (onCommand) {
        onCommand(commands.back());
    }
    return accepts;
}

QStringList RecordingFramework::names() const
{
    QStringList names;
    for (const Command& command : commands) {
        names.append(command.command);
    }
    return names;
}
