#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QSet>
#include <QString>
#include <QTimer>
#include <QVariant>

#include <vector>

/**
 * Notices when the server does not answer: the plug-in itself waits without an end. The host reports each
 * command and reply.
 */
class RequestTimeouts : public QObject
{
    Q_OBJECT
    /** Whether some command waits for longer than it should, and the window has to say so. */
    Q_PROPERTY(bool overdue READ isOverdue NOTIFY overdueChanged)

public:
    /** @param limit how long an answer may take, ms; uploads and talks may take longer */
    explicit RequestTimeouts(int limit = 5000);

    /** Returns the property overdue. */
    bool isOverdue() const { return !m_overdue.isEmpty(); }

    /**
     * Sets how long a server may take to open a talk; the limit of all answers comes on top.
     *
     * @param ms Limits::maxTalkOpeningTime unless it is set
     */
    void setTalkOpeningTime(int ms) { m_talkOpeningTime = ms; }

    /**
     * Returns the request number of the command that was sent last: directly after a call of the plug-in that
     * sends one, its number.
     */
    Q_INVOKABLE quint64 lastSent() const { return m_lastSent; }

    /** Returns whether the link has taken the command that was sent last. */
    bool lastAccepted() const { return m_lastAccepted; }

    /**
     * Returns the request that was answered last. The plug-in sees a reply after this object, so a slot of
     * one of its response signals finds here what it is the response to.
     */
    Q_INVOKABLE quint64 lastAnswered() const { return m_lastAnswered; }
    /** Returns the return code of that answer. */
    Q_INVOKABLE QString errorCode() const { return m_errorCode; }
    /** Returns its error text; empty for a success. */
    Q_INVOKABLE QString errorText() const { return m_errorText; }

public Q_SLOTS:
    /** Takes notice of a command that the host has sent, or that the link has refused; sound is ignored. */
    void commandSent(const QString& command, const QVariant& payload, bool accepted, quint64 request);
    /** Takes notice of a reply, before the plug-in sees it. */
    void replyArrived(const QString& command, const QString& returnCode, const QString& errorText,
                      quint64 request);

    /** Gives up what was asked: after a loss of the connection nobody answers. */
    void forget();

    /** Clears overdue, until the answer to another request is late. */
    void dismiss();

Q_SIGNALS:
    /** Emitted when overdue has changed. */
    void overdueChanged();
    /** Emitted when no answer to a request came in time, or none can come any more. */
    void timedOut(quint64 request);

private:
    struct Waiting
    {
        quint64 request;
        qint64 deadline;
    };

    int limitOf(const QString& command) const;
    void checkDue();

    int m_limit;
    int m_talkOpeningTime;
    QElapsedTimer m_clock;
    QTimer m_timer; ///< Runs while something waits.
    std::vector<Waiting> m_waiting;
    QSet<quint64> m_overdue; ///< The requests that wait for longer than they should.
    quint64 m_lastSent = 0;
    bool m_lastAccepted = false;
    quint64 m_lastAnswered = 0;
    QString m_errorCode;
    QString m_errorText;
};
