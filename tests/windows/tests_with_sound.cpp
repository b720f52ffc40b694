// Runs a test that is a Windows program beside a sound server, and starts for it the commands that it asks
// for:
//
//   tests_with_sound wine-run tst_x.exe [ARGUMENT...]
//
// Each connection to the port in VOICEDESK_TEST_HOST is one command: a line of its words, parted by tabs,
// goes in, its output comes out, and whichever ends first, the connection or the command, ends the other.

#include "tests/support/PulseServer.h"

#include <QCoreApplication>
#include <QProcess>
#include <QTcpServer>
#include <QTcpSocket>

#include <cstdio>

namespace {

/** Only what the tests need: the port is open to all of the machine. */
const QStringList allowed{QStringLiteral("pactl"), QStringLiteral("paplay"), QStringLiteral("parec")};

void runFor(QTcpSocket* socket, const QByteArray& line)
{
    QStringList words = QString::fromUtf8(line).trimmed().split(QLatin1Char('\t'));
    const QString program = words.takeFirst();
    if (!allowed.contains(program)) {
        std::fprintf(stderr, "tests_with_sound: not a command of the tests: %s\n", qPrintable(program));
        socket->abort();
        return;
    }
    auto* process = new QProcess(socket);
    process->setProcessChannelMode(QProcess::ForwardedErrorChannel);
    QObject::connect(process, &QProcess::readyReadStandardOutput, socket,
                     [process, socket] { socket->write(process->readAllStandardOutput()); });
    QObject::connect(process, qOverload<int, QProcess::ExitStatus>(&QProcess::finished), socket,
                     [process, socket] {
                         socket->write(process->readAllStandardOutput());
                         socket->disconnectFromHost();
                     });
    process->start(program, words);
}

void serve(QTcpSocket* socket)
{
    QObject::connect(socket, &QTcpSocket::disconnected, socket, [socket] {
        for (auto* process : socket->findChildren<QProcess*>()) {
            process->disconnect();
            process->terminate();
            process->waitForFinished(5000);
        }
        socket->deleteLater();
    });
    QObject::connect(socket, &QTcpSocket::readyRead, socket, [socket] {
        if (socket->canReadLine()) {
            runFor(socket, socket->readLine());
        }
    });
}

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    QStringList arguments = QCoreApplication::arguments().mid(1);
    if (arguments.isEmpty()) {
        std::fprintf(stderr, "usage: tests_with_sound PROGRAM [ARGUMENT...]\n");
        return 64;
    }
    const PulseServer pulse;
    QTcpServer server;
    if (!pulse.ready() || !server.listen(QHostAddress::LocalHost)) {
        std::fprintf(stderr, "tests_with_sound: no PulseAudio server; is pulseaudio installed?\n");
        return 1;
    }
    QObject::connect(&server, &QTcpServer::newConnection, &server, [&server] {
        while (QTcpSocket* socket = server.nextPendingConnection()) {
            serve(socket);
        }
    });
    qputenv("VOICEDESK_TEST_HOST", QByteArray::number(server.serverPort()));
    QProcess test;
    test.setProcessChannelMode(QProcess::ForwardedChannels);
    QObject::connect(&test, qOverload<int, QProcess::ExitStatus>(&QProcess::finished), &application,
                     [](int code, QProcess::ExitStatus status) {
                         QCoreApplication::exit(status == QProcess::NormalExit ? code : 1);
                     });
    QObject::connect(&test, &QProcess::errorOccurred, &application, [](QProcess::ProcessError error) {
        if (error == QProcess::FailedToStart) {
            QCoreApplication::exit(1);
        }
    });
    test.start(arguments.takeFirst(), arguments);
    return QCoreApplication::exec();
}
