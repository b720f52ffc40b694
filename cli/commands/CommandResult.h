#pragma once

#include "cli/PluginSession.h"

/** Judges an answer to a change: prints what became of it and gives the exit status. */
inline int reportChange(PluginSession& session, bool accepted, const char* responseSignal, const char* done)
{
    if (!accepted) {
        return PluginSession::fail(ExitNoAnswer, QStringLiteral("the request could not be sent"));
    }
    const auto response = session.waitFor(responseSignal);
    if (!response) {
        return PluginSession::fail(ExitNoAnswer, QStringLiteral("the server did not answer"));
    }
    if (!response->arguments.value(0).toBool()) {
        return PluginSession::fail(
            ExitRefused,
            QStringLiteral("%1 (code %2)").arg(session.errorText(), response->arguments.value(1).toString()));
    }
    std::printf("%s %d\n", done, response->arguments.value(2).toInt());
    return ExitSuccess;
}
