#pragma once

#include <QObject>
#include <QString>
#include <QVariant>

class ConfigBase;
class FrameworkWrapperBase;
class QQmlContext;

/**
 * The host framework's abstract plug-in class: what the host calls on every plug-in.
 *
 * The order of the data members and of the virtual operations is a binary contract with the host; never
 * reorder or insert. The class has no meta-object of its own. All operations are called on the thread that
 * created the plug-in.
 */
class PluginBase : public QObject
{
public:
    /**
     * Stores what the plug-in works with, then calls Init.
     *
     * @param context      passed on to Init
     * @param pluginHandle first argument of every FrameworkWrapperBase::SendCommand
     * @param framework    the command channel; not owned, outlives the plug-in
     * @return what Init returned
     */
    virtual bool InitialPluginBase(QQmlContext* context, void* pluginHandle,
                                   FrameworkWrapperBase* framework) = 0;

    /** Delivers an event of the server; the payload is a QVariantMap. */
    virtual void EventProcessor(QString event, qint64, int, int, QVariant payload, const QString&) = 0;

    /** Delivers an event of one of several servers. */
    virtual void EventProcessorEx(QString event, ConfigBase* config, qint64, int, int, QVariant payload,
                                  const QString&) = 0;

    /**
     * Delivers the reply to a command.
     *
     * @param command    the name that was sent
     * @param result     the reply's payload
     * @param userData   the pointer given to SendCommand
     * @param returnCode "0" for success, any other text is a failure
     * @param errorCode  a text that says more about a failure; may be empty
     */
    virtual void CommandProcessor(QString command, QVariant result, void* userData, QString returnCode,
                                  QString errorCode, bool, const QString&) = 0;

    /** Delivers the reply of one of several servers. */
    virtual void CommandProcessorEx(QString command, ConfigBase* config, QVariant result, void* userData,
                                    QString returnCode, QString errorCode, bool, const QString&) = 0;

    /** Builds the plug-in's objects; called by InitialPluginBase. */
    virtual bool Init(QQmlContext* context) = 0;

    /** Keeps a place in the host's table of operations; does nothing. */
    virtual void reservedHookA() {}
    /** Keeps a place in the host's table of operations; does nothing. */
    virtual void reservedHookB() {}

    /** Called each time the connection to the server comes up. */
    virtual void PluginServerConnected() {}

    /** Keeps a place in the host's table of operations; does nothing. */
    virtual void reservedHookC() {}

protected:
    /** @param parent the owner, or null */
    explicit PluginBase(QObject* parent = nullptr) : QObject(parent) {}

    void* m_basePrivate = nullptr;               ///< The host's own; not touched by the plug-in.
    QString m_pluginName;                        ///< Display name.
    QString m_pluginId;                          ///< 32 upper-case hexadecimal digits.
    void* m_pluginHandle = nullptr;              ///< Handle given by the host.
    FrameworkWrapperBase* m_framework = nullptr; ///< Command channel; not owned.
};

/** The identifier of the host's plug-in interface. */
#define PLUGINBASE_IID "com.QUARNEL.UIFramework.PluginInterface"
Q_DECLARE_INTERFACE(PluginBase, PLUGINBASE_IID)
