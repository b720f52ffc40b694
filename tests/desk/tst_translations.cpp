// Each file of desk/translations is a language that the window offers, and leaves no text without a
// translation.

#include "desk/DeskSettings.h"

#include <QCoreApplication>
#include <QDir>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>
#include <QTranslator>
#include <QXmlStreamReader>

class TestTranslations : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void languagesAreOffered();
    void nothingIsMissing_data();
    void nothingIsMissing();
    void placesAreKept_data();
    void placesAreKept();
    void plurals();
    void pagesAreDocumented();

private:
    /** Adds a row for each language with its options of lupdate. */
    static void addRows();
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

/** The languages that have a file: their codes. */
QStringList codes()
{
    QStringList found = QDir(folder).entryList({"voicedesk_*.ts"}, QDir::Files, QDir::Name);
    for (QString& name : found) {
        name = name.section('_', 1).section('.', 0, 0);
    }
    return found;
}

/** The texts of a file that match an expression: its first group. */
QStringList matches(const QString& path, const QString& expression)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        return QStringList();
    }
    QStringList found;
    auto each = QRegularExpression(expression, QRegularExpression::MultilineOption)
                    .globalMatch(QString::fromUtf8(file.readAll()));
    while (each.hasNext()) {
        found.append(each.next().captured(1));
    }
    return found;
}

} // namespace

void TestTranslations::languagesAreOffered()
{
    QTemporaryDir temporary;
    const DeskSettings settings(temporary.filePath("settings"));
    QStringList offered;
    QMap<QString, QString> names;
    for (const QVariant& language : settings.languages()) {
        const QString code = language.toMap()["code"].toString();
        offered.append(code);
        names[language.toMap()["name"].toString()] = code;
    }
    QVERIFY(codes().contains("en") && codes().contains("de"));
    QCOMPARE(offered, codes());
    QCOMPARE(names.size(), offered.size()); // each has its own
    QCOMPARE(names.value("English"), QString("en"));
    QCOMPARE(names.value("Deutsch"), QString("de"));
}

void TestTranslations::addRows()
{
    QTest::addColumn<QStringList>("options");
    for (const QString& code : codes()) {
        QTest::newRow(qPrintable(code)) << (code == "en" ? QStringList{"-pluralonly"} : QStringList());
    }
}

void TestTranslations::nothingIsMissing_data()
{
    addRows();
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

void TestTranslations::placesAreKept_data()
{
    addRows();
}

void TestTranslations::placesAreKept()
{
    const QList<Message> list =
        messages(folder + QStringLiteral("voicedesk_%1.ts").arg(QTest::currentDataTag()));
    QVERIFY(!list.isEmpty());
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

/** README.md has a row for each page, in the order of the window. */
void TestTranslations::pagesAreDocumented()
{
    const QStringList titles =
        matches(WINDOW_SOURCES "/qml/Pages.qml", "PageEntry \\{.* title: qsTr\\(\"([^\"]*)\"\\)");
    QVERIFY(titles.size() > 1);
    QFile readme(WINDOW_SOURCES "/../README.md");
    QVERIFY(readme.open(QIODevice::ReadOnly));
    const QString table =
        QString::fromUtf8(readme.readAll()).section("| Page | What is on it |\n|---|---|\n", 1, 1);
    QStringList documented;
    for (const QString& line : table.section("\n\n", 0, 0).split('\n')) {
        documented.append(line.section(" | ", 0, 0).mid(2));
    }
    QCOMPARE(documented, titles);
}

QTEST_GUILESS_MAIN(TestTranslations)
#include "tst_translations.moc"
