// When a session gives replies and events to its transport, and in which order.

#include "server/core/ServerSession.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QtTest>

#include <functional>
#include <memory>

namespace {

/** Answers each command at once, after what a test wants to happen in it. */
class Answering : public CommandExecutor
{
public:
    std::optional<ServerReply> execute(ServerSession& session, const QString& command, const QVariant&,
                                       quint64) override
    {
        if (during) {
            during(session);
        }
        return ServerReply{command, QVariant(), QString()};
    }
    void openSession(ServerSession&) override {}
    void closeSession(ServerSession&) override {}

    std::function<void(ServerSession&)> during;
};

/** A session, and what it has emitted. */
struct Client
{
    Client()
    {
        QObject::connect(session.get(), &ServerSession::replied,
                         [this](const QString& command) { emitted << command; });
        QObject::connect(session.get(), &ServerSession::eventRaised,
                         [this](const QString& event) { emitted << event; });
    }

    Answering executor;
    std::unique_ptr<ServerSession> session = std::make_unique<ServerSession>(executor);
    QStringList emitted;
};

} // namespace

class TestServerSession : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void allIsEmittedLaterInItsOrder();
    void atTheEndOfATurnAllIsEmitted();
    void anEventLoopInsideAReplyGetsTheOthers();
    void aSessionMayEndWithAReply();
    void aSessionMayEndInsideATurn();
};

void TestServerSession::allIsEmittedLaterInItsOrder()
{
    Client client;
    client.executor.during = [](ServerSession& session) { session.raisePlainEvent("event", {}); };
    client.session->submit("a", QVariant(), 1);
    client.session->submit("b", QVariant(), 2);
    QCOMPARE(client.emitted, QStringList());
    QCoreApplication::processEvents();
    QCOMPARE(client.emitted, QStringList({"event", "a", "event", "b"}));
    client.session->raisePlainEvent("last", {});
    QCOMPARE(client.emitted.size(), 4);
    QCoreApplication::processEvents();
    QCOMPARE(client.emitted.size(), 5);
}

void TestServerSession::atTheEndOfATurnAllIsEmitted()
{
    Client client;
    client.session->raisePlainEvent("before", {});
    {
        const ServerSession::Turn turn(*client.session);
        client.session->submit("a", QVariant(), 1);
        QCOMPARE(client.emitted, QStringList());
    }
    QCOMPARE(client.emitted, QStringList({"before", "a"}));
    QCoreApplication::processEvents();
    QCOMPARE(client.emitted.size(), 2);
}

void TestServerSession::anEventLoopInsideAReplyGetsTheOthers()
{
    Client client;
    QObject::connect(client.session.get(), &ServerSession::replied, [&client](const QString& command) {
        if (command == "a") {
            QCoreApplication::processEvents();
            client.emitted << "after";
        }
    });
    client.session->submit("a", QVariant(), 1);
    client.session->submit("b", QVariant(), 2);
    QCoreApplication::processEvents();
    QCOMPARE(client.emitted, QStringList({"a", "b", "after"}));
}

void TestServerSession::aSessionMayEndWithAReply()
{
    Client client;
    QObject::connect(client.session.get(), &ServerSession::replied, [&client] { client.session.reset(); });
    client.session->submit("a", QVariant(), 1);
    client.session->submit("b", QVariant(), 2);
    QCoreApplication::processEvents();
    QCOMPARE(client.emitted, QStringList("a"));
}

void TestServerSession::aSessionMayEndInsideATurn()
{
    Client client;
    {
        const ServerSession::Turn turn(*client.session);
        client.session->submit("a", QVariant(), 1);
        client.session.reset();
    }
    QCoreApplication::processEvents();
    QCOMPARE(client.emitted, QStringList());
}

QTEST_GUILESS_MAIN(TestServerSession)
#include "tst_serversession.moc"
