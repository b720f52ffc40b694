#pragma once

#include <QAudioDeviceInfo>
#include <QList>
#include <QString>

/**
 * What the plug-in asks Qt of the system: its name and its sound devices. The plug-in's objects are made
 * without arguments, so there is one for the process; tests set one of their own. All calls are on one
 * thread.
 */
class SystemProbe
{
public:
    SystemProbe() = default;
    virtual ~SystemProbe() = default;
    SystemProbe(const SystemProbe&) = delete;
    SystemProbe& operator=(const SystemProbe&) = delete;

    /** Returns QSysInfo::productType(). */
    virtual QString productType() const;
    /** Returns QAudioDeviceInfo::availableDevices of a mode. */
    virtual QList<QAudioDeviceInfo> audioDevices(QAudio::Mode mode) const;
    /** Returns the nearestFormat of a device. */
    virtual QAudioFormat nearestFormat(const QAudioDeviceInfo& device, const QAudioFormat& format) const;

    /** Returns the one that is asked: Qt itself unless another is set. */
    static const SystemProbe& current();
    /** Sets the one that is asked, which outlives its use; null for Qt itself. */
    static void setCurrent(const SystemProbe* probe);
};
