#pragma once

#include <QString>
#include <QVariant>

/**
 * The host framework's command channel, through which every request to the recording server goes.
 *
 * The order of the virtual operations is a binary contract with the host; never reorder or insert. The
 * object belongs to the host and is not deleted through this class.
 */
class FrameworkWrapperBase
{
public:
    /** First place in the host's table; the plug-in does not use it. */
    virtual void reservedOperation() = 0;

    /**
     * Sends one command to the server.
     *
     * @param pluginHandle the handle that the host gave to PluginBase::InitialPluginBase
     * @param pluginId     the plug-in's identifier, 32 upper-case hexadecimal digits
     * @param command      the command's name; the reply comes back under the same name
     * @param param        a QVariantMap, a QVariant holding an int, or an invalid QVariant for no payload
     * @param userData     comes back untouched with the reply; the reply's handler owns what it points to
     * @param flag         always false
     * @param extra        always empty
     * @return whether the host accepted the request; an accepted one is answered later, and once, through
     *         PluginBase::CommandProcessor
     *
     * Called on the plug-in's thread.
     */
    virtual bool SendCommand(void* pluginHandle, const QString& pluginId, const QString& command,
                             const QVariant& param, void* userData, bool flag, const QString& extra) = 0;

protected:
    // Not virtual: a virtual destructor would take a place in the host's table.
    ~FrameworkWrapperBase() = default;
};
