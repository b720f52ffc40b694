#include "client/RecordModels.h"
#include "desk/ScheduleText.h"
#include "tests/desk/ScheduleRecord.h"

#include <QLocale>
#include <QStandardItemModel>
#include <QTest>

class TestScheduleText : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void nextRuns_data();
    void nextRuns();
    void repetitions();
    void week();
    void brokenRecords();

private:
    const QString m_now = "2026-03-04T12:00:00"; // a Wednesday
    ScheduleText m_words;
};

void TestScheduleText::initTestCase()
{
    QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedKingdom));
}

void TestScheduleText::nextRuns_data()
{
    QTest::addColumn<QVariantMap>("schedule");
    QTest::addColumn<QString>("words");
    QTest::newRow("today") << scheduleRecord(0, "2026-03-04T18:30:00") << "today at 18:30";
    QTest::newRow("tomorrow") << scheduleRecord(1, "2020-01-01T08:00:00") << "tomorrow at 08:00";
    QTest::newRow("monday") << scheduleRecord(2, "2020-01-01T08:00:00") << "on Monday at 08:00";
    QTest::newRow("far") << scheduleRecord(0, "2026-04-01T08:00:00") << "on 01/04/2026 at 08:00";
    QTest::newRow("over") << scheduleRecord(0, "2026-03-01T08:00:00") << "not any more";
    QVariantMap off = scheduleRecord(1, "2020-01-01T08:00:00");
    off["enableSchedule"] = false;
    QTest::newRow("off") << off << "switched off";
    QVariantMap without = scheduleRecord(1, "2020-01-01T08:00:00");
    without["audioID"] = 0;
    QTest::newRow("without a file") << without << "its file was deleted";
    QTest::newRow("nonsense") << QVariantMap{{"enableSchedule", true}, {"audioID", 1}} << "not any more";
}

void TestScheduleText::nextRuns()
{
    QFETCH(QVariantMap, schedule);
    QFETCH(QString, words);
    QCOMPARE(m_words.nextRun(schedule, m_now), words);
}

void TestScheduleText::repetitions()
{
    QCOMPARE(m_words.repetition(scheduleRecord(0, "")), QString("once"));
    QCOMPARE(m_words.repetition(scheduleRecord(1, "")), QString("every day"));
    QCOMPARE(m_words.repetition(scheduleRecord(2, "")), QString("Mon, Wed"));
}

void TestScheduleText::week()
{
    // Every field of a record, under the plug-in's name for its role.
    const std::vector<std::pair<QByteArray, QString>> fields = {
        {"idRole", "scheduleID"},
        {"enableRole", "enableSchedule"},
        {"nameRole", "scheduleName"},
        {"startTimeRole", "scheduleStartTime"},
        {"scheduleTypeRole", "scheduleType"},
        {"scheduleSettingsRole", "scheduleSettings"},
        {"endTimeRole", "scheduleEndTime"},
        {"enableEndTimeRole", "enableScheduleEndTime"},
        {"audioFileIDRole", "audioID"},
        {"groupIDListRole", "groupIDList"},
        {"networkAudioIDListRole", "networkAudioIDList"}};
    QStandardItemModel source;
    QHash<int, QByteArray> roles;
    for (const auto& field : fields) {
        roles.insert(Qt::UserRole + 1 + roles.size(), field.first);
    }
    source.setItemRoleNames(roles);
    ScheduleModel model(&source, nullptr);
    const auto add = [&](const QVariantMap& schedule) {
        auto* item = new QStandardItem;
        for (const auto& [role, word] : fields) {
            item->setData(schedule[word], roles.key(role));
        }
        source.appendRow(item);
    };
    add(scheduleRecord(2, "2020-01-01T08:00:00"));
    QVariantMap daily = scheduleRecord(1, "2026-03-07T07:15:00");
    daily["scheduleName"] = "Weekend";
    daily["enableSchedule"] = false;
    add(daily);
    add(QVariantMap{{"scheduleName", "broken"}});
    QCOMPARE(model.record(1)["scheduleName"].toString(), QString("Weekend"));
    const QDate monday = m_words.mondayOf(QDate(2026, 3, 4));
    QCOMPARE(monday, QDate(2026, 3, 2));
    const QVariantList runs = m_words.week(&model, monday);
    QStringList words;
    for (const QVariant& run : runs) {
        const QVariantMap map = run.toMap();
        words.append(QString("%1 %2 %3 %4")
                         .arg(map["day"].toInt())
                         .arg(map["minute"].toInt())
                         .arg(map["name"].toString())
                         .arg(map["enabled"].toBool()));
    }
    QCOMPARE(words, (QStringList{"0 480 Bell 1", "2 480 Bell 1", "5 435 Weekend 0", "6 435 Weekend 0"}));
    QVERIFY(m_words.week(nullptr, monday).isEmpty());
}

void TestScheduleText::brokenRecords()
{
    QCOMPARE(m_words.nextRun(QVariantMap(), m_now), QString("switched off"));
    QCOMPARE(m_words.repetition(QVariantMap()), QString("once"));
}

QTEST_GUILESS_MAIN(TestScheduleText)
#include "tst_scheduletext.moc"
