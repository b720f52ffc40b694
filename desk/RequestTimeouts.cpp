#include "desk/RequestTimeouts.h"

#include "protocol/CommandTable.h"
#include "protocol/Limits.h"
#include "protocol/ReturnCode.h"
#include "protocol/Words.h"

#include <algorithm>

namespace {

constexpr int lookInterval = 250; // ms
constexpr int lateFactor = 12;    // more patience for commands that are answered late

} // namespace

RequestTimeouts::RequestTimeouts(int limit) : m_limit(limit), m_talkOpeningTime(Limits::maxTalkOpeningTime)
{
    m_clock.start();
    m_timer.setInterval(lookInterval);
    connect(&m_timer, &QTimer::timeout, this, &RequestTimeouts::checkDue);
}

void RequestTimeouts::commandSent(const QString& command, const QVariant& /*payload*/, bool accepted,
                                  quint64 request)
{
    if (command == Vocabulary::TalkData) {
        return; // sound is not waited for
    }
    m_lastSent = request;
    m_lastAccepted = accepted;
    if (!accepted) {
        return;
    }
    m_waiting.push_back({request, m_clock.elapsed() + limitOf(command)});
    m_timer.start();
}

/** How long the answer to a command may take, ms. */
int RequestTimeouts::limitOf(const QString& command) const
{
    if (command == Vocabulary::StartTalk || command == Vocabulary::StartTalkToIPAudio) {
        return m_talkOpeningTime + m_limit; // the refusal of a server that gives a device up comes first
    }
    const CommandTable::Row* row = CommandTable::find(command);
    const bool late = row != nullptr && row->answered == CommandTable::Answered::Late;
    return late ? lateFactor * m_limit : m_limit;
}

void RequestTimeouts::replyArrived(const QString& /*command*/, const QString& returnCode,
                                   const QString& errorText, quint64 request)
{
    m_lastAnswered = request;
    m_errorCode = returnCode;
    m_errorText = errorText;
    const auto found = std::find_if(m_waiting.begin(), m_waiting.end(),
                                    [=](const Waiting& waiting) { return waiting.request == request; });
    if (found != m_waiting.end()) {
        m_waiting.erase(found);
    }
    if (m_waiting.empty()) {
        m_timer.stop();
    }
    // An answer to another request says nothing of the one that is late: a server may be half dead.
    if (m_overdue.remove(request) && m_overdue.isEmpty()) {
        Q_EMIT overdueChanged();
    }
}

void RequestTimeouts::forget()
{
    std::vector<Waiting> waiting;
    waiting.swap(m_waiting);
    m_timer.stop();
    dismiss();
    for (const Waiting& lost : waiting) {
        Q_EMIT timedOut(lost.request);
    }
}

void RequestTimeouts::dismiss()
{
    if (isOverdue()) {
        m_overdue.clear();
        Q_EMIT overdueChanged();
    }
}

void RequestTimeouts::checkDue()
{
    const qint64 now = m_clock.elapsed();
    const auto late = std::stable_partition(m_waiting.begin(), m_waiting.end(),
                                            [now](const Waiting& waiting) { return waiting.deadline > now; });
    const std::vector<Waiting> overdue(late, m_waiting.end());
    m_waiting.erase(late, m_waiting.end());
    if (m_waiting.empty()) {
        m_timer.stop();
    }
    if (overdue.empty()) {
        return;
    }
    const bool wasOverdue = isOverdue();
    for (const Waiting& waiting : overdue) {
        m_overdue.insert(waiting.request);
    }
    if (!wasOverdue) {
        Q_EMIT overdueChanged();
    }
    for (const Waiting& waiting : overdue) {
        Q_EMIT timedOut(waiting.request);
    }
}
