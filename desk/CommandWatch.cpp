#include "desk/CommandWatch.h"

#include <algorithm>

namespace {

constexpr int lookInterval = 250; // ms
constexpr int uploadFactor = 12;

} // namespace

CommandWatch::CommandWatch(int limit) : m_limit(limit)
{
    m_clock.start();
    m_timer.setInterval(lookInterval);
    connect(&m_timer, &QTimer::timeout, this, &CommandWatch::look);
}

bool CommandWatch::isWaiting(const QString& command) const
{
    return std::any_of(m_waiting.begin(), m_waiting.end(),
                       [&](const Waiting& waiting) { return waiting.command == command; });
}

void CommandWatch::commandSent(const QString& command, const QVariant& /*payload*/, bool accepted)
{
    if (!accepted || command == QLatin1String("TalkData")) {
        return; // sound is not waited for
    }
    const int limit = command == QLatin1String("UploadFile") ? uploadFactor * m_limit : m_limit;
    m_waiting.push_back({command, m_clock.elapsed() + limit});
    m_timer.start();
}

void CommandWatch::replyArrived(const QString& command, const QString& returnCode, const QString& errorText)
{
    if (returnCode != QLatin1String("0")) {
        m_errors[command] = {returnCode, errorText};
    }
    const auto found = std::find_if(m_waiting.begin(), m_waiting.end(),
                                    [&](const Waiting& waiting) { return waiting.command == command; });
    if (found != m_waiting.end()) {
        m_waiting.erase(found);
    }
    if (m_waiting.empty()) {
        m_timer.stop();
    }
    dismiss(); // it does answer
}

void CommandWatch::forget()
{
    std::vector<Waiting> waiting;
    waiting.swap(m_waiting);
    m_timer.stop();
    dismiss();
    for (const Waiting& lost : waiting) {
        Q_EMIT timedOut(lost.command);
    }
}

void CommandWatch::dismiss()
{
    if (!m_overdue.isEmpty()) {
        m_overdue.clear();
        Q_EMIT overdueChanged();
    }
}

void CommandWatch::look()
{
    const qint64 now = m_clock.elapsed();
    const auto late = std::stable_partition(m_waiting.begin(), m_waiting.end(),
                                            [now](const Waiting& waiting) { return waiting.deadline > now; });
    QStringList commands;
    std::for_each(late, m_waiting.end(), [&](const Waiting& waiting) { commands.append(waiting.command); });
    m_waiting.erase(late, m_waiting.end());
    if (m_waiting.empty()) {
        m_timer.stop();
    }
    if (commands.isEmpty()) {
        return;
    }
    m_overdue += commands;
    Q_EMIT overdueChanged();
    for (const QString& command : qAsConst(commands)) {
        Q_EMIT timedOut(command);
    }
}
