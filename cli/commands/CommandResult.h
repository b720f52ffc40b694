#pragma once

#include "cli/AwaitedSignal.h"

/**
 * Sends a request for a change, waits for its response, prints the result and returns the ExitStatus.
 *
 * @param session  an open session
 * @param response the signal that answers
 * @param request  sends the request; returns whether the host accepted it
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
