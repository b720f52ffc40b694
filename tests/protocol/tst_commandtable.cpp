// The tables of commands and events, and the size of a payload.

#include "protocol/CommandTable.h"
#include "protocol/EventTable.h"
#include "protocol/Limits.h"
#include "protocol/ReturnCode.h"
#include "protocol/Words.h"

#include <QFile>
#include <QRegularExpression>
#include <QSet>
#include <QTest>

class TestCommandTable : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyWordOfACommandHasARow();
    void unknownCommands();
    void limitsFitTheMessages();
    void answers();
    void returnCodesDiffer();
    void events();
    void sizes_data();
    void sizes();
    void sizeOfDeepNesting();
    void unknownKeys();
};

namespace {

/** The words of a header between two comments. */
QStringList words(const QString& header, const QString& from, const QString& to)
{
    QFile file(QStringLiteral(PROJECT_FOLDER "/") + header);
    if (!file.open(QIODevice::ReadOnly)) {
        return QStringList();
    }
    const QString text = QString::fromUtf8(file.readAll());
    const QString part = text.section(from, 1, 1).section(to, 0, 0);
    QStringList list;
    auto found = QRegularExpression("QStringLiteral\\(\"(\\w+)\"\\)").globalMatch(part);
    while (found.hasNext()) {
        list.append(found.next().captured(1));
    }
    return list;
}

template<class Rows>
QStringList sortedNames(const Rows& rows)
{
    QStringList names;
    for (const auto& row : rows) {
        names.append(row.name);
    }
    names.sort();
    return names;
}

} // namespace

void TestCommandTable::everyWordOfACommandHasARow()
{
    const QStringList vocabulary = words("src/vocabulary/Vocabulary.h", "@name Commands", "@}");
    const QStringList own = words("protocol/HostCommands.h", "@name Commands", "@}");
    QCOMPARE(vocabulary.size(), 25);
    QVERIFY(!own.isEmpty());
    QStringList all = vocabulary + own;
    all.sort();
    QCOMPARE(sortedNames(CommandTable::rows()), all);
    for (const QString& name : all) {
        QVERIFY(CommandTable::find(name) != nullptr);
        QCOMPARE(CommandTable::find(name)->name, name);
    }
}

void TestCommandTable::unknownCommands()
{
    QCOMPARE(CommandTable::find("Nothing"), nullptr);
    QCOMPARE(CommandTable::find("startTalk"), nullptr); // letter by letter
    QCOMPARE(CommandTable::find(QString()), nullptr);
}

void TestCommandTable::limitsFitTheMessages()
{
    for (const CommandTable::Row& row : CommandTable::rows()) {
        QVERIFY2(row.maxSize > 0 && row.maxSize <= Limits::maxMessageToServerBytes, qPrintable(row.name));
        const bool keyed = row.payload.kind == PayloadShape::Map || row.payload.kind == PayloadShape::Maps;
        QVERIFY2(keyed != row.payload.keys.isEmpty(), qPrintable(row.name));
    }
    // The largest file and its name in Base64, with what is around them.
    const qint64 text = (Limits::maxFileBytes + 2) / 3 * 4;
    QVERIFY(text + Limits::maxNameLength * 4 + 1024 < Limits::maxMessageToServerBytes);
    // The longest lists are not refused for their size.
    QVERIFY(CommandTable::find(Vocabulary::AddIPAudio)->maxSize >=
            Limits::maxListEntries * (Limits::maxNameLength + 1));
    QVERIFY(CommandTable::find(Vocabulary::TalkData)->maxSize >=
            Limits::maxTargetsLength + Limits::maxTalkDataLength);
}

void TestCommandTable::answers()
{
    using CommandTable::Answered;
    QStringList late;
    QStringList often;
    const QStringList own = words("protocol/HostCommands.h", "@name Commands", "@}");
    for (const CommandTable::Row& row : CommandTable::rows()) {
        if (own.contains(row.name)) {
            QCOMPARE(row.malformed, ReturnCode::malformedRequest);
            continue;
        }
        if (row.answered == Answered::Late) {
            late.append(row.name);
        } else if (row.answered == Answered::Often) {
            often.append(row.name);
        }
        QCOMPARE(row.malformed,
                 row.name == Vocabulary::UploadFile ? ReturnCode::fileRefused : ReturnCode::malformedRequest);
    }
    QCOMPARE(late,
             (QStringList{Vocabulary::UploadFile, Vocabulary::StartTalk, Vocabulary::StartTalkToIPAudio}));
    QCOMPARE(often,
             (QStringList{Vocabulary::PlayAudio, Vocabulary::PlayGroupAudio, Vocabulary::AlarmPlayIPAudio}));
}

void TestCommandTable::returnCodesDiffer()
{
    QSet<QString> codes;
    for (const QString* code : ReturnCode::all) {
        codes.insert(*code);
    }
    QCOMPARE(codes.size(), static_cast<int>(std::size(ReturnCode::all)));
    QVERIFY(codes.contains("0") && codes.contains("-2"));
}

void TestCommandTable::events()
{
    QStringList names = words("src/vocabulary/Vocabulary.h", "@name Events", "@}");
    const QStringList own = words("protocol/Words.h", "@name Events", "@}");
    QVERIFY(!own.isEmpty());
    for (const QString& name : own) {
        QVERIFY(!EventTable::isForPlugin(name));
    }
    names += own;
    names.sort();
    QCOMPARE(sortedNames(EventTable::rows()), names);
    QVERIFY(EventTable::isForPlugin(Vocabulary::AudioReceived));
    QVERIFY(EventTable::isForPlugin(Vocabulary::PlayAudioFailed));
    QVERIFY(EventTable::isForPlugin(Vocabulary::TalkDisconnected));
    QVERIFY(!EventTable::isForPlugin("Nothing"));
}

void TestCommandTable::sizes_data()
{
    QTest::addColumn<QVariant>("payload");
    QTest::addColumn<qint64>("size");
    QTest::newRow("nothing") << QVariant() << qint64{1};
    QTest::newRow("number") << QVariant(7) << qint64{1};
    QTest::newRow("text") << QVariant("abc") << qint64{4};
    QTest::newRow("bytes") << QVariant(QByteArray("abcd")) << qint64{5};
    QTest::newRow("texts") << QVariant(QStringList{"a", "bc"}) << qint64{6};
    QTest::newRow("list") << QVariant(QVariantList{1, "bc"}) << qint64{5};
    QTest::newRow("map") << QVariant(QVariantMap{{"key", "bc"}, {"k", 1}}) << qint64{9};
    QTest::newRow("map in a list") << QVariant(QVariantList{QVariantMap{{"k", 1}}}) << qint64{4};
}

void TestCommandTable::sizes()
{
    QFETCH(QVariant, payload);
    QFETCH(qint64, size);
    QCOMPARE(payloadSize(payload, 1000), size);
    QCOMPARE(payloadSize(payload, size), size);
    QVERIFY(payloadSize(payload, size - 1) > size - 1);
}

void TestCommandTable::sizeOfDeepNesting()
{
    const auto nested = [](int depth) {
        QVariant value(1);
        for (int i = 0; i < depth; ++i) {
            value = QVariantList{value};
        }
        return value;
    };
    QCOMPARE(payloadSize(nested(Limits::maxNesting), 1000), qint64{Limits::maxNesting + 1});
    QVERIFY(payloadSize(nested(Limits::maxNesting + 1), 1000) > 1000);
}

void TestCommandTable::unknownKeys()
{
    const PayloadShape shape{PayloadShape::Map, {"name", "port"}};
    QVERIFY(!unknownKey(shape, QVariantMap()));
    QVERIFY(!unknownKey(shape, QVariantMap{{"port", 1}}));
    QVERIFY(!unknownKey(shape, QVariantMap{{"name", QVariantMap{{"inner", 1}}}, {"port", 1}}));
    QVERIFY(!unknownKey(shape, 7));
    QCOMPARE(unknownKey(shape, QVariantMap{{"name", 1}, {"Port", 1}}), std::optional<QString>("Port"));
    QCOMPARE(unknownKey(shape, QVariantMap{{"", 1}}), std::optional<QString>(""));
    QCOMPARE(unknownKey(PayloadShape(), QVariantMap{{"a", 1}}), std::optional<QString>("a"));
}

QTEST_GUILESS_MAIN(TestCommandTable)
#include "tst_commandtable.moc"
