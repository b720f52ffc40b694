#pragma once

#include "protocol/ServerReply.h"

#include <QStringList>

#include <optional>

/** The rules of a record's fields. Any thread. */
namespace RecordChecks {

/** The result of a check: empty for a valid field, or the refusal. */
using Refusal = std::optional<ServerReply>;

/** Checks a name: 1 to Limits::maxNameLength characters, not all blank, no control characters. */
Refusal name(const QString& name);

/** Checks an address: IPv4, IPv6 or a host name. */
Refusal address(const QString& address);

/**
 * Checks a camera's address: one as of a device, the same with a port, or a URL of RTSP or HTTP, which may
 * have a login in it.
 */
Refusal cameraAddress(const QString& text);

/** Checks a port: 1 to Limits::maxPort. */
Refusal port(int port);

/** Checks a login: each of the two has at most Limits::maxCredentialLength characters, no control ones. */
Refusal credentials(const QString& username, const QString& password);

/** Checks the camera ids of a device: none is empty, none is there twice. */
Refusal cameras(const QStringList& cameras);

/** Splits ids joined with commas; empty for any other text, a negative id or one that is there twice. */
std::optional<QList<int>> ids(const QString& text);

/** Joins ids with commas. */
QString joined(const QList<int>& ids);

} // namespace RecordChecks
