// The window's own controls, each by itself, in QML.

#include "desk/DeskWindow.h"

#include <QQmlContext>
#include <QQmlEngine>
#include <QtQuickTest>

/** What of the desk the controls ask for. */
class FakeDesk : public QObject
{
    Q_OBJECT
    Q_PROPERTY(QObject* watch READ watch CONSTANT)

public:
    FakeDesk() : m_watch(60000) {}
    QObject* watch() { return &m_watch; }

    Q_INVOKABLE QString words(const QString& code, const QString& detail) const { return code + detail; }
    Q_INVOKABLE QString escaped(const QString& text) const { return QRegularExpression::escape(text); }
    /** Sends a command and lets its time run out. */
    Q_INVOKABLE void loseCommand(const QString& name)
    {
        m_watch.commandSent(name, QVariant(), true);
        m_watch.forget();
    }

private:
    CommandWatch m_watch;
};

class Setup : public QObject
{
    Q_OBJECT

public Q_SLOTS:
    void applicationAvailable() { DeskWindow::registerTypes(); }
    void qmlEngineAvailable(QQmlEngine* engine)
    {
        engine->rootContext()->setContextProperty(QStringLiteral("desk"), &m_desk);
    }

private:
    FakeDesk m_desk;
};

QUICK_TEST_MAIN_WITH_SETUP(components, Setup)
#include "quick_components.moc"
