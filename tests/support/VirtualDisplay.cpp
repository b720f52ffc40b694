#include "tests/support/VirtualDisplay.h"

namespace {

constexpr int timeout = 20000; // ms

} // namespace

VirtualDisplay::VirtualDisplay(int width, int height)
{
    m_server.start(QStringLiteral("Xvfb"),
                   {QStringLiteral("-displayfd"), QStringLiteral("1"), QStringLiteral("-screen"),
                    QStringLiteral("0"), QStringLiteral("%1x%2x24").arg(width).arg(height),
                    QStringLiteral("-nolisten"), QStringLiteral("tcp")});
    if (!m_server.waitForStarted(timeout)) {
        return;
    }
    while (!m_server.canReadLine() && m_server.waitForReadyRead(timeout)) {
    }
    const QByteArray number = m_server.readLine().trimmed();
    m_ready = !number.isEmpty();
    qputenv("DISPLAY", ":" + number);
    qputenv("QT_QPA_PLATFORM", "xcb");
    qputenv("QT_QUICK_BACKEND", "software"); // the same picture on every machine
}

VirtualDisplay::~VirtualDisplay()
{
    m_server.terminate();
    if (!m_server.waitForFinished(timeout)) {
        m_server.kill();
        m_server.waitForFinished(timeout);
    }
}
