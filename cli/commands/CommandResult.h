#pragma once

#include "cli/AwaitedSignal.h"

/**
 * Asks for a change, waits for its answer, prints what became of it and gives the exit status.
 *
 * @param response the signal that answers
 * @param request  returns whether the plug-in took it
 * @param done     printed before the id
 */
template<class Request>
int change(PluginSession& session, void (PluginClient::*response)(bool, const QString&, int),
           const Request& request, const char* done)
{
    AwaitedSignal answer(session, response);
    if (!request(session.plugin())) {
        return PluginSession::fail(ExitNoAnswer, QStringLiteral("the request could not be sent"));
    }
    const auto values = answer.wait();
    if (!values) {
        return PluginSession::fail(ExitNoAnswer, QStringLiteral("the server did not answer"));
    }
    const auto& [success, returnCode, id] = *values;
    if (!success) {
        return PluginSession::fail(ExitRefused,
                                   QStringLiteral("%1 (code %2)").arg(session.errorText(), returnCode));
    }
    std::printf("%s %d\n", done, id);
    return ExitSuccess;
}
