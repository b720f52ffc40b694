#include "tests/support/HostCommand.h"

#include "tests/support/ChildProcess.h"

#include <QProcess>

namespace {

QProcess& process(const std::unique_ptr<QIODevice>& pipe)
{
    return static_cast<QProcess&>(*pipe);
}

} // namespace

HostCommand::HostCommand(const QString& program, const QStringList& arguments)
    : m_pipe(std::make_unique<ChildProcess>())
{
    process(m_pipe).setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process(m_pipe).start(program, arguments);
    process(m_pipe).waitForStarted();
}

HostCommand::~HostCommand()
{
    process(m_pipe).terminate();
    if (!process(m_pipe).waitForFinished(5000)) {
        process(m_pipe).kill();
        process(m_pipe).waitForFinished();
    }
}

bool HostCommand::isRunning() const
{
    return process(m_pipe).state() != QProcess::NotRunning;
}

bool HostCommand::waitForOutput(int timeout)
{
    return m_pipe->waitForReadyRead(timeout);
}

bool HostCommand::waitForEnd(int timeout)
{
    return !isRunning() || process(m_pipe).waitForFinished(timeout);
}

QByteArray HostCommand::takeOutput()
{
    return m_pipe->readAll();
}
