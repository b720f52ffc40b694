#pragma once

#include "src/PluginVoiceDesk.h"
#include "tests/support/FakeFrameSmith.h"
#include "tests/support/LogCapture.h"
#include "tests/support/RecordingFramework.h"
#include "tests/support/SystemOverrides.h"
#include "tests/support/Variants.h"

#include <QSignalSpy>

#include <memory>

/** A plug-in with everything around it faked, initialised as the host does it. */
struct PluginFixture
{
    explicit PluginFixture(const QString& productType = QStringLiteral("debian"))
    {
        FakeFrameSmith::reset();
        SystemOverrides::setProductType(productType);
        SystemOverrides::setMicrophones(0);
        plugin = std::make_unique<PluginVoiceDesk>();
        initialised = plugin->InitialPluginBase(nullptr, &handle, &framework);
        log.clear();
    }

    void reply(const QString& command, const QString& returnCode, const QVariant& result = QVariant(),
               void* userData = nullptr)
    {
        plugin->CommandProcessor(command, result, userData, returnCode, QString(), false, QString());
    }

    void event(const QString& name, const QVariant& payload)
    {
        plugin->EventProcessor(name, 0, 0, 0, payload, QString());
    }

    /** Opens a talk to a camera as a user and the server would. */
    void openCameraTalk(const QString& token, const QString& relayPath = QString())
    {
        plugin->startTalk(QStringLiteral("cam"), relayPath);
        reply(QStringLiteral("StartTalk"), QStringLiteral("0"),
              QVariantMap{{"camId", "cam"}, {"talkToken", token}, {"relayPath", relayPath}});
    }

    static QVariant disconnected(const QString& token)
    {
        return QVariantMap{{"TalkDisconnected", QVariantMap{{"Token", token}}}};
    }

    LogCapture log;
    int handle = 0; ///< Its address is the plug-in's handle.
    RecordingFramework framework;
    std::unique_ptr<PluginVoiceDesk> plugin;
    bool initialised = false;
};
