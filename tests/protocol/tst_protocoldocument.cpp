// docs/PROTOCOL.md says what the tables of the protocol say.

#include "protocol/CommandTable.h"
#include "protocol/EventTable.h"
#include "protocol/Limits.h"
#include "protocol/ReturnCode.h"

#include <QFile>
#include <QLocale>
#include <QRegularExpression>
#include <QTest>

class TestProtocolDocument : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void commands();
    void events();
    void returnCodes();
    void limits();
    void streamTypes();

private:
    /** The rows of all tables of the document that have a head, in its order. */
    QStringList rows(const QString& head) const;

    /** Compares rows, in any order, and says which are missing and which are too many. */
    static void compare(QStringList actual, QStringList expected);

    QStringList m_lines;
};

namespace {

QString read(const QString& name)
{
    QFile file(QStringLiteral(PROJECT_FOLDER "/") + name);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

QString words(const PayloadShape& shape)
{
    const QString keys = shape.keys.join(", ");
    switch (shape.kind) {
    case PayloadShape::Nothing:
        return "nothing";
    case PayloadShape::Number:
        return "int";
    case PayloadShape::Text:
        return "text";
    case PayloadShape::Map:
        return "map: " + keys;
    case PayloadShape::Maps:
        return "list of maps: " + keys;
    }
    return QString();
}

QString words(CommandTable::Answered answered)
{
    switch (answered) {
    case CommandTable::Answered::AtOnce:
        return "at once";
    case CommandTable::Answered::Late:
        return "late";
    case CommandTable::Answered::Often:
        return "often";
    }
    return QString();
}

QString grouped(qint64 number)
{
    return QLocale(QLocale::English, QLocale::UnitedStates).toString(number);
}

} // namespace

void TestProtocolDocument::initTestCase()
{
    m_lines = read("docs/PROTOCOL.md").split('\n');
    QVERIFY(m_lines.size() > 100);
}

QStringList TestProtocolDocument::rows(const QString& head) const
{
    QStringList found;
    for (int i = 0; i < m_lines.size(); ++i) {
        if (m_lines[i] == head) {
            for (i += 2; i < m_lines.size() && m_lines[i].startsWith('|'); ++i) {
                found.append(m_lines[i]);
            }
        }
    }
    return found;
}

void TestProtocolDocument::compare(QStringList actual, QStringList expected)
{
    actual.sort();
    expected.sort();
    for (const QString& row : expected) {
        if (!actual.removeOne(row)) {
            qWarning("missing:  %s", qPrintable(row));
        }
    }
    for (const QString& row : actual) {
        qWarning("too much: %s", qPrintable(row));
    }
}

void TestProtocolDocument::commands()
{
    QStringList expected;
    for (const CommandTable::Row& row : CommandTable::rows()) {
        expected.append(QStringLiteral("| `%1` | %2 | %3 | %4 | %5 | %6 |")
                            .arg(row.name, words(row.payload), grouped(row.maxSize), words(row.answer),
                                 words(row.refusal), words(row.answered)));
    }
    const QStringList actual = rows("| Command | Payload | Size | Answer | Refusal | Answered |");
    compare(actual, expected);
    QCOMPARE(QSet<QString>(actual.begin(), actual.end()), QSet<QString>(expected.begin(), expected.end()));
    QCOMPARE(actual.size(), expected.size());
}

void TestProtocolDocument::events()
{
    QStringList expected;
    for (const EventTable::Row& row : EventTable::rows()) {
        expected.append(QStringLiteral("| `%1` | %2 | %3 | %4 |")
                            .arg(row.name, row.keys.join(", "),
                                 row.nested ? "in a map under the event's own name" : "the payload itself",
                                 row.receiver == EventTable::Receiver::Plugin ? "plug-in" : "host"));
    }
    const QStringList actual = rows("| Event | Fields | Where they are | Handled by |");
    compare(actual, expected);
    QCOMPARE(QSet<QString>(actual.begin(), actual.end()), QSet<QString>(expected.begin(), expected.end()));
    QCOMPARE(actual.size(), expected.size());
}

void TestProtocolDocument::returnCodes()
{
    QStringList expected;
    for (const QString* code : ReturnCode::all) {
        expected.append(*code);
    }
    QStringList actual;
    for (const QString& row : rows("| Code | Meaning |")) {
        auto codes = QRegularExpression("\"(-?\\d+)\"").globalMatch(row.section('|', 1, 1));
        while (codes.hasNext()) {
            actual.append(codes.next().captured(1));
        }
    }
    actual.sort();
    expected.sort();
    QCOMPARE(actual, expected);
}

void TestProtocolDocument::limits()
{
#define LIMIT(name)                                                                                          \
    {                                                                                                        \
#name, Limits::name                                                                                  \
    }
    const QMap<QString, qint64> values{
        LIMIT(maxNameLength),
        LIMIT(maxCredentialLength),
        LIMIT(maxUrlLength),
        LIMIT(maxPort),
        LIMIT(maxAddressLength),
        LIMIT(maxListEntries),
        LIMIT(maxCameras),
        LIMIT(maxDevices),
        LIMIT(maxGroups),
        LIMIT(maxSchedules),
        LIMIT(maxFiles),
        LIMIT(maxWaitingUploads),
        LIMIT(maxListBytes),
        LIMIT(maxSettingsBytes),
        LIMIT(maxFileBytes),
        LIMIT(maxProgressPercent),
        LIMIT(maxTargetsLength),
        LIMIT(maxTalkDataLength),
        LIMIT(maxTalksPerSession),
        LIMIT(maxTalkOpeningTime),
        LIMIT(maxPictureBytes),
        LIMIT(maxVideoUnitBytes),
        LIMIT(maxVideosPerSession),
        LIMIT(maxVideosAtOnce),
        LIMIT(maxWaitingForVideo),
        LIMIT(maxShortPayload),
        LIMIT(maxNesting),
        LIMIT(maxLoginBytes),
        LIMIT(maxPasswordBytes),
        LIMIT(maxLoginTime),
        LIMIT(maxIdleTime),
        LIMIT(maxClients),
        LIMIT(maxWaitingBytes),
        LIMIT(maxMessageToServerBytes),
        LIMIT(maxMessageToClientBytes),
    };
#undef LIMIT
    QStringList names;
    auto declared = QRegularExpression("constexpr int (\\w+) =").globalMatch(read("protocol/Limits.h"));
    while (declared.hasNext()) {
        names.append(declared.next().captured(1));
    }
    names.sort();
    QCOMPARE(values.keys(), names);
    QStringList expected;
    for (auto value = values.begin(); value != values.end(); ++value) {
        expected.append(QStringLiteral("| `%1` | %2 ").arg(value.key(), grouped(value.value())));
    }
    QStringList actual;
    for (const QString& row : rows("| Limit | Value | Meaning |")) {
        actual.append(row.section('|', 0, 2));
    }
    actual.sort();
    compare(actual, expected);
    QCOMPARE(actual, expected);
}

void TestProtocolDocument::streamTypes()
{
    QStringList expected;
    auto types =
        QRegularExpression("uint32_t \\w+ = (\\d+);").globalMatch(read("src/vocabulary/StreamType.h"));
    while (types.hasNext()) {
        expected.append(types.next().captured(1));
    }
    QVERIFY(expected.size() > 1);
    QStringList actual;
    for (const QString& row :
         rows("| \"StreamType\" | Codec | Bitstream of the reference server's cameras |")) {
        actual.append(row.section('|', 1, 1).trimmed());
    }
    actual.sort();
    expected.sort();
    compare(actual, expected);
    QCOMPARE(actual, expected);
}

QTEST_GUILESS_MAIN(TestProtocolDocument)
#include "tst_protocoldocument.moc"
