#pragma once

#include "platform/FrameworkWrapperBase.h"

#include <QStringList>
#include <QVariantMap>

#include <functional>
#include <vector>

/** Takes the host's place: keeps every command that the plug-in sends. */
class RecordingFramework : public FrameworkWrapperBase
{
public:
    struct Command
    {
        void* pluginHandle;
        QString pluginId;
        QString command;
        QVariant param;
        void* userData;
        bool flag;
        QString extra;

        QVariantMap map() const { return param.toMap(); }
    };

    virtual ~RecordingFramework() = default;

    void reservedOperation() override;
    bool SendCommand(void* pluginHandle, const QString& pluginId, const QString& command,
                     const QVariant& param, void* userData, bool flag, const QString& extra) override;

    /** The names of the commands sent so far. */
    QStringList names() const;

    bool accepts = true;
    std::vector<Command> commands;
    std::function<void(const Command&)> onCommand; ///< Called from inside SendCommand.
};
