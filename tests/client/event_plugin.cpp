// A plug-in that keeps the names of the events it is given, in its property "events".

#include "platform/PluginBase.h"

#include <QStringList>
#include <QVariant>

class EventPlugin : public PluginBase
{
    Q_OBJECT
    Q_INTERFACES(PluginBase)
    Q_PLUGIN_METADATA(IID PLUGINBASE_IID)

public:
    bool InitialPluginBase(QQmlContext* context, void*, FrameworkWrapperBase*) override
    {
        return Init(context);
    }
    void EventProcessor(QString event, qint64, int, int, QVariant, const QString&) override
    {
        setProperty("events", property("events").toStringList() << event);
    }
    void EventProcessorEx(QString, ConfigBase*, qint64, int, int, QVariant, const QString&) override {}
    void CommandProcessor(QString, QVariant, void*, QString, QString, bool, const QString&) override {}
    void CommandProcessorEx(QString, ConfigBase*, QVariant, void*, QString, QString, bool,
                            const QString&) override
    {
    }
    bool Init(QQmlContext*) override { return true; }
};

#include "event_plugin.moc"
