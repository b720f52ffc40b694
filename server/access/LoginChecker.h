#pragma once

#include "server/access/UserStore.h"

#include <QObject>

#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>
#include <vector>

/**
 * Checks logins on threads of its own, since a check takes a tenth of a second and the server has other
 * clients.
 *
 *   check --> requests --> thread (UserStore::admits) --> verdicts --> checked
 *
 * All members are used, and the signal is emitted, on the thread that made the object.
 */
class LoginChecker : public QObject
{
    Q_OBJECT

public:
    /** @param users copied */
    explicit LoginChecker(const UserStore& users);
    /** Waits for the checks that are running; drops the others. */
    ~LoginChecker() override;

    /**
     * Queues a login for its check; checked follows.
     *
     * @param name   empty for a token
     * @param secret the password or token
     * @return the number of the check, not 0
     */
    quint64 check(const QString& name, const QString& secret);

    /**
     * Removes a login from the queue, because its client has left. Does nothing for one whose check runs or
     * that is unknown.
     */
    void withdraw(quint64 number);

    /** Returns the number of logins in the queue. */
    std::size_t waiting();

Q_SIGNALS:
    /** Emitted when the check with this number has ended. */
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

    const UserStore m_users;
    quint64 m_lastNumber = 0;
    std::mutex m_mutex; ///< Guards what follows.
    std::condition_variable m_condition;
    std::deque<Request> m_requests;
    std::vector<Verdict> m_verdicts;
    bool m_ending = false;
    std::vector<std::thread> m_threads;
};
