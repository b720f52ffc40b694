#pragma once

#include <QString>

/**
 * What Qt says of the system, as a test wants it: a program that links this has its own QSysInfo::productType
 * and QAudioDeviceInfo::availableDevices, which take precedence over Qt's.
 */
namespace SystemOverrides {

void setProductType(const QString& type);
void setMicrophones(int count);
void setOutputDevices(int count);

/** How often the microphones were listed since the last setMicrophones. */
int microphoneListings();

} // namespace SystemOverrides
