#pragma once

#include "protocol/ServerReply.h"

#include <QStringList>

#include <optional>

/** What records must be like. Each check is empty when all is well, or the refusal. */
namespace RecordChecks {

using Refusal = std::optional<ServerReply>;

/** 1 to Limits::maxNameLength characters, not all blank, no control characters. */
Refusal name(const QString& name);

/** An IPv4 or IPv6 address, or a host name. */
Refusal address(const QString& address);

/** 1 to Limits::maxPort. */
Refusal port(int port);

/** Each at most Limits::maxCredentialLength characters. */
Refusal credentials(const QString& username, const QString& password);

/** The camera ids of a device: none empty, none twice. */
Refusal cameras(const QStringList& cameras);

/** Splits ids joined with commas; empty for anything else, a negative id or one that comes twice. */
std::optional<QList<int>> ids(const QString& text);

/** Ids joined with commas. */
QString joined(const QList<int>& ids);

} // namespace RecordChecks
