#include "server/talks/TalkDestinations.h"

#include <QTest>

class TestTalkDestinations : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void lists_data();
    void lists();
};

void TestTalkDestinations::lists_data()
{
    QTest::addColumn<QString>("targets");
    QTest::addColumn<bool>("valid");
    QTest::addColumn<QStringList>("tokens");
    QTest::newRow("none") << "" << true << QStringList{};
    QTest::newRow("plain") << "<Dest>a</Dest>" << true << QStringList{"a"};
    QTest::newRow("relayed") << "<Dest>r/a</Dest>" << true << QStringList{"a"};
    QTest::newRow("long relay path") << "<Dest>x/y/z/a</Dest>" << true << QStringList{"a"};
    QTest::newRow("two") << "<Dest>r/a</Dest><Dest>b</Dest>" << true << QStringList{"a", "b"};
    QTest::newRow("empty token") << "<Dest></Dest>" << true << QStringList{""};
    QTest::newRow("relay alone") << "<Dest>r/</Dest>" << true << QStringList{""};
    QTest::newRow("text") << "a" << false << QStringList{};
    QTest::newRow("not closed") << "<Dest>a" << false << QStringList{};
    QTest::newRow("not opened") << "a</Dest>" << false << QStringList{};
    QTest::newRow("cut") << "<Dest>a</Dest><De" << false << QStringList{};
    QTest::newRow("something between") << "<Dest>a</Dest> <Dest>b</Dest>" << false << QStringList{};
    QTest::newRow("another case") << "<dest>a</dest>" << false << QStringList{};
}

void TestTalkDestinations::lists()
{
    QFETCH(QString, targets);
    QFETCH(bool, valid);
    QFETCH(QStringList, tokens);
    const auto parsed = parseTalkDestinations(targets);
    QCOMPARE(parsed.has_value(), valid);
    if (valid) {
        QCOMPARE(*parsed, tokens);
    }
}

QTEST_APPLESS_MAIN(TestTalkDestinations)
#include "tst_talkdestinations.moc"
