#pragma once

#include <QElapsedTimer>
#include <QHash>
#include <QObject>
#include <QPair>
#include <QStringList>
#include <QTimer>

#include <vector>

/**
 * Notices when the server does not answer: the plug-in itself waits for ever. Told of every command and reply
 * by the host.
 */
class CommandWatch : public QObject
{
    Q_OBJECT
    /** Whether some command waits for longer than it should. */
    Q_PROPERTY(bool overdue READ isOverdue NOTIFY overdueChanged)

public:
    /** @param limit how long an answer may take, ms; uploads may take longer */
    explicit CommandWatch(int limit = 5000);

    bool isOverdue() const { return !m_overdue.isEmpty(); }

    /** The error text of the last reply to a command that was no success. */
    Q_INVOKABLE QString errorText(const QString& command) const { return m_errors.value(command).second; }
    /** Its return code. */
    Q_INVOKABLE QString errorCode(const QString& command) const { return m_errors.value(command).first; }

    /** Whether a command of this name still waits in time. */
    Q_INVOKABLE bool isWaiting(const QString& command) const;

public Q_SLOTS:
    void commandSent(const QString& command, const QVariant& payload, bool accepted);
    void replyArrived(const QString& command, const QString& returnCode, const QString& errorText);

    /** Forgets what was asked: nobody will answer after a loss of the connection. */
    void forget();

    /** Puts the banner away. */
    void dismiss();

Q_SIGNALS:
    void overdueChanged();
    /** No answer came in time. */
    void timedOut(const QString& command);

private:
    struct Waiting
    {
        QString command;
        qint64 deadline;
    };

    void look();

    int m_limit;
    QElapsedTimer m_clock;
    QTimer m_timer; ///< Runs while something waits.
    std::vector<Waiting> m_waiting;
    QStringList m_overdue;
    QHash<QString, QPair<QString, QString>> m_errors; ///< By command: return code and text.
};
