// A host as small as can be: loads the plug-in given, initialises it, asks for a talk, and tells what
// happened.

#include "platform/FrameworkWrapperBase.h"
#include "platform/PluginBase.h"

#include <QCoreApplication>
#include <QPluginLoader>

#include <cstdio>

namespace {

class Framework : public FrameworkWrapperBase
{
public:
    virtual ~Framework() = default;
    void reservedOperation() override {}
    bool SendCommand(void*, const QString&, const QString& command, const QVariant&, void*, bool,
                     const QString&) override
    {
        std::printf("command %s\n", qPrintable(command));
        return true;
    }
};

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    QPluginLoader loader(QString::fromLocal8Bit(argv[1]));
    auto* plugin = qobject_cast<PluginBase*>(loader.instance());
    if (plugin == nullptr) {
        std::printf("not loaded: %s\n", qPrintable(loader.errorString()));
        return 1;
    }
    Framework framework;
    std::printf("initialised %d\n", plugin->InitialPluginBase(nullptr, nullptr, &framework) ? 1 : 0);
    plugin->PluginServerConnected();
    delete plugin;
    return 0;
}
