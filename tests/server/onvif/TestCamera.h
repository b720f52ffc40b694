#pragma once

#include "tests/support/ChildProcess.h"
#include "tests/support/WavFiles.h"

#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QStringList>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>
#include <csignal>
#include <cstring>

/** A camera with a loudspeaker in a process of its own: gst-rtsp-server behind the options of
 * test_camera.cpp. */
class TestCamera
{
public:
    explicit TestCamera(const QStringList& options = QStringList())
    {
        m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        m_process.start(QStringLiteral(TEST_CAMERA),
                        options + QStringList{"--record", path("heard"), "--log", path("log")});
        waitFor("ready");
    }
    ~TestCamera()
    {
        m_process.kill();
        m_process.waitForFinished();
    }
    TestCamera(const TestCamera&) = delete;
    TestCamera& operator=(const TestCamera&) = delete;

    QString address(const QString& scheme = QStringLiteral("rtsp"),
                    const QString& at = QStringLiteral("/talk")) const
    {
        return QStringLiteral("%1://127.0.0.1:%2%3").arg(scheme).arg(m_port).arg(at);
    }

    /** Waits for a line that begins so; the line, or an empty one. */
    QString waitFor(const QString& start, int timeout = 10000)
    {
        QElapsedTimer clock;
        clock.start();
        for (;;) {
            read();
            for (const QString& line : qAsConst(m_lines)) {
                if (line.startsWith(start)) {
                    return line;
                }
            }
            if (clock.elapsed() > timeout || m_process.state() == QProcess::NotRunning) {
                return QString();
            }
            m_process.waitForReadyRead(10);
            QCoreApplication::processEvents();
        }
    }

    /** How many lines begin so, by now. */
    int count(const QString& start)
    {
        m_process.waitForReadyRead(1);
        read();
        return static_cast<int>(std::count_if(m_lines.begin(), m_lines.end(),
                                              [&](const QString& line) { return line.startsWith(start); }));
    }

    /** One packet that came through to its depayloader. */
    struct Packet
    {
        qint64 time; ///< Microseconds of the steady clock.
        quint32 timestamp;
        int size;
        bool marker;
    };

    std::vector<Packet> packets(int session = 1) const
    {
        std::vector<Packet> all;
        for (const QByteArray& line : content("log", session).split('\n')) {
            const QList<QByteArray> words = line.split(' ');
            if (words.size() == 4) {
                all.push_back({words[0].toLongLong(), words[1].toUInt(), words[2].toInt(), words[3] == "1"});
            }
        }
        return all;
    }

    /** What it heard, at its codec's rate. */
    WavFiles::Samples heard(int session = 1) const
    {
        const QByteArray bytes = content("heard", session);
        WavFiles::Samples samples(static_cast<std::size_t>(bytes.size() / 2));
        std::memcpy(samples.data(), bytes.constData(), samples.size() * 2);
        return samples;
    }

    void kill() { m_process.kill(); }
    void stop() const { ::kill(static_cast<pid_t>(m_process.processId()), SIGSTOP); }
    void wake() const { ::kill(static_cast<pid_t>(m_process.processId()), SIGCONT); }

private:
    QString path(const QString& name) const { return m_folder.filePath(name); }

    QByteArray content(const QString& name, int session) const
    {
        QFile file(path(session == 1 ? name : QStringLiteral("%1-%2").arg(name).arg(session)));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    void read()
    {
        while (m_process.canReadLine()) {
            m_lines.append(QString::fromUtf8(m_process.readLine()).trimmed());
            if (m_lines.last().startsWith("ready")) {
                m_port = m_lines.last().section(' ', 1).toInt();
            }
        }
    }

    QTemporaryDir m_folder;
    ChildProcess m_process;
    QStringList m_lines;
    int m_port = 0;
};
