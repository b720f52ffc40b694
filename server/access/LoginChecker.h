#pragma once

#include "server/access/UserBook.h"

#include <QObject>

#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>
#include <vector>

/**
 * Looks at logins on threads of its own: a password takes its time, and the server has other clients.
 *
 *   check --> requests --> thread (UserBook::admits) --> verdicts --> checked, on the caller's thread
 */
class LoginChecker : public QObject
{
    Q_OBJECT

public:
    explicit LoginChecker(const UserBook& users);
    ~LoginChecker() override;

    /** Begins to look at a login; its number comes back with checked. */
    quint64 check(const QString& name, const QString& secret);

    /** Takes back a login whose client has gone, so that it costs the others no time. One that is already
     * being looked at, or unknown, is left alone. */
    void withdraw(quint64 number);

    /** How many logins wait to be looked at. */
    std::size_t waiting();

Q_SIGNALS:
    void checked(quint64 number, bool admitted);

private Q_SLOTS:
    void collect();

private:
    struct Request
    {
        quint64 number;
        QString name;
        QString secret;
    };
    struct Verdict
    {
        quint64 number;
        bool admitted;
    };

    void work();

    const UserBook m_users;
    quint64 m_lastNumber = 0;
    std::mutex m_mutex; ///< Guards what follows.
    std::condition_variable m_condition;
    std::deque<Request> m_requests;
    std::vector<Verdict> m_verdicts;
    bool m_ending = false;
    std::vector<std::thread> m_threads;
};
