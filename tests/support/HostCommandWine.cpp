// Under Wine: a connection to tests_with_sound is the command; closing it ends the command.

#include "tests/support/HostCommand.h"

#include <QDir>
#include <QFileInfo>
#include <QTcpSocket>

#include <windows.h>

namespace {

constexpr int connectTimeout = 10000; // ms

QTcpSocket& socket(const std::unique_ptr<QIODevice>& pipe)
{
    return static_cast<QTcpSocket&>(*pipe);
}

/** A path as the machine around Wine knows it; another word as it is. */
QString outside(const QString& word)
{
    using UnixName = char*(CDECL*)(const wchar_t*);
    const auto unixName = reinterpret_cast<UnixName>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleA("kernel32.dll"), "wine_get_unix_file_name")));
    if (unixName == nullptr || !QFileInfo(word).isAbsolute()) {
        return word;
    }
    char* name = unixName(QDir::toNativeSeparators(word).toStdWString().c_str());
    if (name == nullptr) {
        return word;
    }
    const QString path = QString::fromUtf8(name);
    HeapFree(GetProcessHeap(), 0, name);
    return path;
}

} // namespace

HostCommand::HostCommand(const QString& program, const QStringList& arguments)
    : m_pipe(std::make_unique<QTcpSocket>())
{
    socket(m_pipe).connectToHost(QStringLiteral("127.0.0.1"),
                                 static_cast<quint16>(qEnvironmentVariableIntValue("VOICEDESK_TEST_HOST")));
    QStringList words{program};
    for (const QString& word : arguments) {
        words.append(outside(word));
    }
    if (socket(m_pipe).waitForConnected(connectTimeout)) {
        socket(m_pipe).write(words.join(QLatin1Char('\t')).toUtf8() + '\n');
        socket(m_pipe).flush();
    }
}

HostCommand::~HostCommand()
{
    socket(m_pipe).abort();
}

bool HostCommand::isRunning() const
{
    return socket(m_pipe).state() == QAbstractSocket::ConnectedState;
}

bool HostCommand::waitForOutput(int timeout)
{
    return m_pipe->waitForReadyRead(timeout);
}

bool HostCommand::waitForEnd(int timeout)
{
    return !isRunning() || socket(m_pipe).waitForDisconnected(timeout);
}

QByteArray HostCommand::takeOutput()
{
    return m_pipe->readAll();
}
