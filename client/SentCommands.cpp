#include "client/SentCommands.h"

namespace {

// A talk sends twelve commands a second; commands that are answered more than once go on for minutes.
constexpr std::size_t remembered = 4096;

} // namespace

SentCommands::SentCommands() : m_recent(remembered) {}

quint32 SentCommands::add(const QString& command, void* userData)
{
    do {
        ++m_last; // wraps
    } while (m_last == 0 || m_withData.contains(m_last));
    m_recent[m_last % remembered] = {m_last, command};
    if (userData != nullptr) {
        m_withData.insert(m_last, {command, userData});
    }
    return m_last;
}

SentCommands::Match SentCommands::match(quint32 number, const QString& nameInReply)
{
    const auto waiting = m_withData.find(number);
    if (waiting != m_withData.end()) {
        const Match match = *waiting;
        m_withData.erase(waiting);
        return match;
    }
    const Named& recent = m_recent[number % remembered];
    return {number != 0 && recent.number == number ? recent.command : nameInReply, nullptr};
}

void SentCommands::clear()
{
    m_withData.clear();
    m_recent.assign(remembered, {});
}
