#pragma once

#include <QtGlobal>

#include <optional>

/** What has gone through a TCP connection. */
struct SocketFlow
{
    qint64 received = 0;       ///< Bytes that came, read or not.
    qint64 written = 0;        ///< Bytes that were written, sent or not.
    std::optional<qint64> end; ///< Of what the peer has room for: grows only as the peer reads.

    /** Returns the state of a connection; empty where the system does not say it: on Linux alone it does. */
    static std::optional<SocketFlow> of(qintptr socket);
};
