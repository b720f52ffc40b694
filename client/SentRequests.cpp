#include "client/SentRequests.h"

namespace {

// A talk sends twelve commands a second; commands that are answered more than once go on for minutes.
constexpr std::size_t remembered = 20000;

} // namespace

SentRequests::SentRequests() : m_recent(remembered) {}

void SentRequests::add(quint64 number, const QString& command, void* userData)
{
    m_recent[number % remembered] = {number, command};
    if (userData != nullptr) {
        m_withData.insert(number, {command, userData});
    }
}

SentRequests::Request SentRequests::answered(quint64 number, const QString& nameInReply)
{
    const auto waiting = m_withData.find(number);
    if (waiting != m_withData.end()) {
        const Request request = *waiting;
        m_withData.erase(waiting);
        return request;
    }
    const Named& recent = m_recent[number % remembered];
    return {number != 0 && recent.number == number ? recent.command : nameInReply, nullptr};
}

void SentRequests::clear()
{
    m_withData.clear();
    m_recent.assign(remembered, {});
}
