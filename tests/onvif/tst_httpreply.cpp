// Replies of HTTP as they come, in pieces of any size.

#include "onvif/HttpReply.h"

#include <QElapsedTimer>
#include <QTest>

Q_DECLARE_METATYPE(HttpReply::State)

namespace {

constexpr int maxBody = 1000;

/** Reads a reply that comes in pieces of a size, and then the end of the connection. */
HttpReply read(const QByteArray& bytes, int piece)
{
    HttpReply reply(maxBody);
    for (int at = 0; at < bytes.size(); at += piece) {
        reply.take(bytes.mid(at, piece));
    }
    reply.end();
    return reply;
}

} // namespace

class TestHttpReply : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void replies_data();
    void replies();
    void endsByItself();
    void headers();
    void headIsBounded();
    void linesAreBounded();
    void chunksAreBounded();
    void smallChunksAreCheap();
};

void TestHttpReply::replies_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<HttpReply::State>("state");
    QTest::addColumn<int>("status");
    QTest::addColumn<QByteArray>("body");
    const QByteArray ok = "HTTP/1.1 200 OK\r\n";
    const QByteArray chunked = ok + "Transfer-Encoding: Chunked\r\n\r\n";
    const auto row = [](const char* title, const QByteArray& bytes, HttpReply::State state, int status,
                        const QByteArray& body) { QTest::newRow(title) << bytes << state << status << body; };
    row("length", ok + "Content-Length: 3\r\n\r\nabc", HttpReply::Done, 200, "abc");
    row("no length", ok + "\r\nabc\r\n", HttpReply::Done, 200, "abc\r\n");
    row("no body", ok + "content-length:0\r\n\r\n", HttpReply::Done, 200, "");
    row("no content", "HTTP/1.1 204 No\r\n\r\n", HttpReply::Done, 204, "");
    row("no words", "HTTP/1.0 404\r\n\r\nx", HttpReply::Done, 404, "x");
    row("bare line ends", "HTTP/1.1 500 Oh\nContent-Length: 1\n\nx", HttpReply::Done, 500, "x");
    row("interim", "HTTP/1.1 100 Continue\r\nX: y\r\n\r\n" + ok + "Content-Length: 1\r\n\r\nx",
        HttpReply::Done, 200, "x");
    row("chunks", chunked + "3\r\nabc\r\nA;x=y\r\n0123456789\r\n0\r\nX: y\r\n\r\n", HttpReply::Done, 200,
        "abc0123456789");
    row("more than its length", ok + "Content-Length: 2\r\n\r\nabc", HttpReply::Done, 200, "ab");
    row("the largest", ok + "Content-Length: 1000\r\n\r\n" + QByteArray(1000, 'x'), HttpReply::Done, 200,
        QByteArray(1000, 'x'));

    row("nothing", "", HttpReply::Broken, 0, "");
    row("no HTTP", "RTSP/1.0 200 OK\r\n\r\n", HttpReply::Broken, 0, "");
    row("another version", "HTTP/2.0 200 OK\r\n\r\n", HttpReply::Broken, 0, "");
    row("no status", "HTTP/1.1 OK\r\n\r\n", HttpReply::Broken, 0, "");
    row("a long status", "HTTP/1.1 2000 OK\r\n\r\n", HttpReply::Broken, 0, "");
    row("a negative status", "HTTP/1.1 -20 OK\r\n\r\n", HttpReply::Broken, 0, "");
    row("a small status", "HTTP/1.1 099 OK\r\n\r\n", HttpReply::Broken, 0, "");
    row("another protocol", "HTTP/1.1 101 Switch\r\n\r\n", HttpReply::Broken, 101, "");
    row("a bare carriage return", ok + "X: a\rb\r\n\r\n", HttpReply::Broken, 200, "");
    row("cut head", ok + "Content-Le", HttpReply::Broken, 200, "");
    row("cut body", ok + "Content-Length: 4\r\n\r\nabc", HttpReply::Broken, 200, "abc");
    row("cut chunk", chunked + "4\r\nabc", HttpReply::Broken, 200, "abc");
    row("no last chunk", chunked + "3\r\nabc\r\n", HttpReply::Broken, 200, "abc");
    row("no number", ok + "Content-Length: x\r\n\r\n", HttpReply::Broken, 200, "");
    row("a negative length", ok + "Content-Length: -1\r\n\r\n", HttpReply::Broken, 200, "");
    row("two lengths", ok + "Content-Length: 1\r\nContent-Length: 2\r\n\r\nabc", HttpReply::Broken, 200, "");
    row("another coding", ok + "Transfer-Encoding: gzip\r\n\r\nabc", HttpReply::Broken, 200, "");
    row("no chunk size", chunked + "\r\nabc", HttpReply::Broken, 200, "");
    row("a sign before a chunk", chunked + "+1\r\na", HttpReply::Broken, 200, "");
    row("a prefix before a chunk", chunked + "0X1\r\na", HttpReply::Broken, 200, "");
    row("a negative chunk", chunked + "-1\r\nabc", HttpReply::Broken, 200, "");
    row("a chunk without an end", chunked + "3\r\nabcd\r\n", HttpReply::Broken, 200, "abc");

    row("too large", ok + "Content-Length: 1001\r\n\r\n", HttpReply::TooLarge, 200, "");
    row("gigabytes", ok + "Content-Length: 99999999999\r\n\r\n", HttpReply::TooLarge, 200, "");
    row("a number without an end", ok + "Content-Length: " + QByteArray(100, '9') + "\r\n\r\n",
        HttpReply::TooLarge, 200, "");
    row("a large chunk", chunked + "FFFFFFFF\r\n", HttpReply::TooLarge, 200, "");
}

void TestHttpReply::replies()
{
    QFETCH(QByteArray, bytes);
    QFETCH(HttpReply::State, state);
    QFETCH(int, status);
    QFETCH(QByteArray, body);
    for (const int piece : {1, 7, 100000}) {
        const HttpReply reply = read(bytes, piece);
        QCOMPARE(reply.state(), state);
        QCOMPARE(reply.status(), status);
        QCOMPARE(reply.body(), body);
    }
}

/** A reply with a length does not wait for the end of the connection. */
void TestHttpReply::endsByItself()
{
    HttpReply reply(maxBody);
    QCOMPARE(reply.take("HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\na"), HttpReply::Reading);
    QCOMPARE(reply.take("b"), HttpReply::Done);
    QCOMPARE(reply.take("c"), HttpReply::Done);
    QCOMPARE(reply.body(), QByteArray("ab"));
}

void TestHttpReply::headers()
{
    const HttpReply reply =
        read("HTTP/1.1 401 No\r\nWWW-Authenticate: Basic realm=\"a\"\r\nno header\r\n: none\r\n"
             "www-authenticate:  Digest nonce=\"b:c\" \r\n\r\n",
             5);
    QCOMPARE(reply.header("www-authenticate"), QByteArray("Basic realm=\"a\", Digest nonce=\"b:c\""));
    QCOMPARE(reply.header("x"), QByteArray());
}

void TestHttpReply::headIsBounded()
{
    const QByteArray line = "X: " + QByteArray(95, 'x') + "\r\n"; // 100 bytes
    for (const QByteArray& bytes :
         {"HTTP/1.1 200 OK\r\n" + line.repeated(HttpReply::maxHeadBytes / 100 + 1),
          "HTTP/1.1 200 OK\r\nX: " + QByteArray(HttpReply::maxHeadBytes, 'x'),
          QByteArray(HttpReply::maxHeadBytes + 1, 'x'),
          QByteArray("HTTP/1.1 100 Continue\r\n\r\n").repeated(HttpReply::maxHeadBytes / 25 + 1),
          "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n0\r\n" +
              line.repeated(HttpReply::maxHeadBytes / 100 + 1)}) {
        HttpReply reply(maxBody);
        QCOMPARE(reply.take(bytes), HttpReply::TooLarge);
    }
    HttpReply small(maxBody);
    QCOMPARE(small.take("HTTP/1.1 200 OK\r\n" + line.repeated(HttpReply::maxHeadBytes / 100 - 1)),
             HttpReply::Reading);
}

void TestHttpReply::linesAreBounded()
{
    HttpReply reply(maxBody);
    reply.take("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n");
    QCOMPARE(reply.take("1;" + QByteArray(HttpReply::maxLineBytes, 'x')), HttpReply::TooLarge);
}

/** What is around the body counts, too. */
void TestHttpReply::chunksAreBounded()
{
    HttpReply reply(maxBody);
    reply.take("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n");
    int taken = 0;
    while (reply.state() == HttpReply::Reading && taken < 1000000) {
        taken += 1010;
        reply.take("1;" + QByteArray(1003, 'x') + "\r\nx\r\n");
    }
    QCOMPARE(reply.state(), HttpReply::TooLarge);
    QVERIFY2(taken < 30000, qPrintable(QString::number(taken)));
}

void TestHttpReply::smallChunksAreCheap()
{
    constexpr int count = 200000;
    const QByteArray chunks = QByteArray("1\r\nx\r\n").repeated(count);
    HttpReply reply(2 * count);
    reply.take("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n");
    QElapsedTimer clock;
    clock.start();
    QCOMPARE(reply.take(chunks), HttpReply::Reading);
    QVERIFY2(clock.elapsed() < 2000, qPrintable(QString::number(clock.elapsed())));
    QCOMPARE(reply.body().size(), count);
}

QTEST_GUILESS_MAIN(TestHttpReply)
#include "tst_httpreply.moc"
