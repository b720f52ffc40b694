#pragma once

#include "cli/PluginSession.h"

#include <QCoreApplication>

#include <deque>
#include <optional>
#include <tuple>

/**
 * A signal of the plug-in that a command waits for: keeps what it has carried, from the construction on. Make
 * one before the request whose answer it is.
 */
template<class... Arguments>
class AwaitedSignal : public QObject
{
public:
    using Values = std::tuple<std::decay_t<Arguments>...>;

    /** @param session outlives this */
    AwaitedSignal(PluginSession& session, void (PluginClient::*signal)(Arguments...)) : m_session(session)
    {
        connect(&session.plugin(), signal, this,
                [this](Arguments... arguments) { m_values.emplace_back(arguments...); });
    }

    /** Waits for the next one; empty after the time-out. @param timeout ms; 0: the session's */
    std::optional<Values> wait(int timeout = 0)
    {
        m_session.wait([this] { return !m_values.empty(); }, timeout);
        return take();
    }

    /** One that has come already; serves events first. */
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
