#pragma once

#include "cli/PluginSession.h"

#include <QCoreApplication>

#include <deque>
#include <optional>
#include <tuple>

/**
 * A signal of the plug-in that a command waits for. It stores the arguments of each emission since its
 * construction: make one before the request that the signal answers.
 */
template<class... Arguments>
class AwaitedSignal : public QObject
{
public:
    using Values = std::tuple<std::decay_t<Arguments>...>; ///< The signal's arguments.

    /**
     * @param session outlives the object
     * @param signal  the signal of its plug-in
     */
    AwaitedSignal(PluginSession& session, void (PluginClient::*signal)(Arguments...)) : m_session(session)
    {
        connect(&session.plugin(), signal, this,
                [this](Arguments... arguments) { m_values.emplace_back(arguments...); });
    }

    /** Waits for the next emission; empty after @p timeout in ms, 0 for the session's. */
    std::optional<Values> wait(int timeout = 0)
    {
        m_session.wait([this] { return !m_values.empty(); }, timeout);
        return take();
    }

    /** Returns the next emission that has come already, if any; serves events first. */
    std::optional<Values> takeNow()
    {
        QCoreApplication::processEvents();
        return take();
    }

private:
    std::optional<Values> take()
    {
        if (m_values.empty()) {
            return std::nullopt;
        }
        Values taken = m_values.front();
        m_values.pop_front();
        return taken;
    }

    PluginSession& m_session;
    std::deque<Values> m_values;
};
