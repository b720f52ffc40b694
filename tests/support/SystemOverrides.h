#pragma once

#include <QAudioFormat>
#include <QList>
#include <QString>

/**
 * What the plug-in is told of the system, as a test wants it: a program that links this has its own
 * SystemProbe. Until it sets something the system has no name and no sound devices.
 */
namespace SystemOverrides {

void setProductType(const QString& type);
void setMicrophones(int count);
void setOutputDevices(int count);

/** Output devices that give these as their nearest formats, asked in this order again and again. */
void setOutputFormats(const QList<QAudioFormat>& formats);

/** The formats that the devices were asked for since the last setOutputFormats. */
QList<QAudioFormat> askedFormats();

/** How often the output devices were listed since the last setOutputFormats. */
int outputListings();

/** How often the microphones were listed since the last setMicrophones. */
int microphoneListings();

} // namespace SystemOverrides
