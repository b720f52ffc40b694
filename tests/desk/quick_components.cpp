// The window's own controls, each by itself, in QML.

#include "desk/DeskWindow.h"
#include "protocol/ReturnCode.h"
#include "tests/desk/QmlComplaints.h"

#include <QQmlContext>
#include <QQmlEngine>
#include <QtQuickTest>

/** What of the desk the controls ask for. */
class FakeDesk : public QObject
{
    Q_OBJECT
    Q_PROPERTY(RequestTimeouts* watch READ watch CONSTANT)

public:
    FakeDesk() : m_watch(60000) {}
    RequestTimeouts* watch() { return &m_watch; }

    Q_INVOKABLE QString words(const QString& code, const QString& detail) const { return code + detail; }
    /** Sends a command. @return its request */
    Q_INVOKABLE quint64 send()
    {
        m_watch.commandSent(Vocabulary::AddIPAudio, QVariant(), true, ++m_request);
        return m_request;
    }
    /** Answers a request as the host does, before the plug-in's signal. */
    Q_INVOKABLE void answer(quint64 request)
    {
        m_watch.replyArrived(Vocabulary::AddIPAudio, ReturnCode::success, QString(), request);
    }
    /** Lets the time of all requests run out. */
    Q_INVOKABLE void loseAll() { m_watch.forget(); }

private:
    quint64 m_request = 0;
    RequestTimeouts m_watch;
};

class Setup : public QObject
{
    Q_OBJECT

public Q_SLOTS:
    void applicationAvailable()
    {
        QmlComplaints::watch();
        DeskWindow::registerTypes();
    }
    void qmlEngineAvailable(QQmlEngine* engine)
    {
        engine->rootContext()->setContextProperty(QStringLiteral("desk"), &m_desk);
    }

private:
    FakeDesk m_desk;
};

int main(int argc, char** argv)
{
    Setup setup;
    const int failed = quick_test_main_with_setup(argc, argv, "components", QUICK_TEST_SOURCE_DIR, &setup);
    const QStringList complaints = QmlComplaints::take();
    for (const QString& complaint : complaints) {
        std::fprintf(stderr, "QML complains: %s\n", qPrintable(complaint));
    }
    return failed + complaints.size();
}

#include "quick_components.moc"
