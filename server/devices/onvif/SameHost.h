#pragma once

#include <QString>

/**
 * Whether a host is the one of an RTSP address. Looks the address's name up where the two are not the same
 * text, and so may block. Any thread.
 *
 * @param host    name or address, as a camera gives it
 * @param address URL of a stream
 */
bool isSameHost(const QString& host, const QString& address);
