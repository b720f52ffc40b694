#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <memory>

class QIODevice;

/**
 * A command of the machine that carries out the tests, such as those of its sound server; not a program of
 * ours. Where the tests are Windows programs under Wine, which can't start the commands around it,
 * tests_with_sound outside does so for them.
 */
class HostCommand
{
public:
    /** Starts a command that is found by the path. Its errors go to the test's own. */
    HostCommand(const QString& program, const QStringList& arguments);

    /** Ends the command if it still runs. */
    ~HostCommand();
    HostCommand(const HostCommand&) = delete;
    HostCommand& operator=(const HostCommand&) = delete;

    bool isRunning() const;

    /** Waits for output. @param timeout in ms */
    bool waitForOutput(int timeout);

    /** Waits for the end. @param timeout in ms @return whether the command has ended by itself */
    bool waitForEnd(int timeout);

    /** What the command has written since the last time. */
    QByteArray takeOutput();

private:
    std::unique_ptr<QIODevice> m_pipe;
};
