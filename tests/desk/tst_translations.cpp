// No text of the window is left without a translation.

#include <QCoreApplication>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>
#include <QTranslator>
#include <QXmlStreamReader>

class TestTranslations : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void nothingIsMissing_data();
    void nothingIsMissing();
    void placesAreKept();
    void plurals();
};

namespace {

const QString folder = QStringLiteral(WINDOW_SOURCES "/translations/");

struct Message
{
    QString source;
    QString translation;
    bool finished;
};

QList<Message> messages(const QString& path)
{
    QList<Message> list;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        return list;
    }
    QXmlStreamReader xml(&file);
    while (!xml.atEnd()) {
        xml.readNext();
        if (xml.isStartElement() && xml.name() == "source") {
            list.append({xml.readElementText(), QString(), false});
        } else if (xml.isStartElement() && xml.name() == "translation" && !list.isEmpty()) {
            list.last().finished = !xml.attributes().hasAttribute("type");
            list.last().translation = xml.readElementText(QXmlStreamReader::IncludeChildElements);
        }
    }
    return list;
}

} // namespace

void TestTranslations::nothingIsMissing_data()
{
    QTest::addColumn<QStringList>("options");
    QTest::newRow("de") << QStringList();
    QTest::newRow("en") << QStringList{"-pluralonly"};
}

void TestTranslations::nothingIsMissing()
{
    // The sources are read anew: a text that was added since counts as missing.
    QFETCH(QStringList, options);
    const QString name = QStringLiteral("voicedesk_%1.ts").arg(QTest::currentDataTag());
    QTemporaryDir temporary;
    const QString copy = temporary.filePath(name);
    QVERIFY(QFile::copy(folder + name, copy));
    QProcess update;
    update.start(LUPDATE,
                 options + QStringList{"-locations", "none", "-no-obsolete", WINDOW_SOURCES, "-ts", copy});
    QVERIFY(update.waitForFinished());
    QCOMPARE(update.exitCode(), 0);
    const QList<Message> list = messages(copy);
    QVERIFY(list.size() > (options.isEmpty() ? 200 : 1));
    QStringList missing;
    for (const Message& message : list) {
        if (!message.finished || message.translation.isEmpty()) {
            missing.append(message.source);
        }
    }
    QCOMPARE(missing.join(" | "), QString());
}

void TestTranslations::placesAreKept()
{
    const QList<Message> list = messages(folder + "voicedesk_de.ts");
    for (const Message& message : list) {
        for (int place = 1; place <= 4; ++place) {
            const QString mark = QStringLiteral("%%1").arg(place);
            QVERIFY2(message.source.contains(mark) == message.translation.contains(mark),
                     qPrintable(message.source));
        }
    }
}

void TestTranslations::plurals()
{
    QTranslator english;
    QVERIFY(english.load(QStringLiteral(":/translations/voicedesk_en.qm")));
    QCOMPARE(english.translate("GroupsPage", "%n speaker(s)", nullptr, 1), QString("%n speaker"));
    QCOMPARE(english.translate("GroupsPage", "%n speaker(s)", nullptr, 2), QString("%n speakers"));
}

QTEST_GUILESS_MAIN(TestTranslations)
#include "tst_translations.moc"
