#include "client/RecordModels.h"
#include "desk/ScheduleText.h"

#include <QLocale>
#include <QStandardItemModel>
#include <QTest>

class TestScheduleText : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void possibleOnes();
    void impossibleOnes_data();
    void impossibleOnes();
    void nextRuns_data();
    void nextRuns();
    void repetitions();
    void week();
    void brokenRecords();

private:
    static QVariantMap record(int type, const char* start)
    {
        return {{"scheduleName", "Bell"},
                {"enableSchedule", true},
                {"scheduleType", type},
                {"scheduleSettings", QVariantMap{{"weekdays", QVariantList{3, 1}}}},
                {"scheduleStartTime", start},
                {"scheduleEndTime", ""},
                {"enableScheduleEndTime", false},
                {"audioID", 4},
                {"groupIDList", QVariantList{}},
                {"networkAudioIDList", QVariantList{7}}};
    }

    const QString m_now = "2026-03-04T12:00:00"; // a Wednesday
    ScheduleText m_words;
};

void TestScheduleText::initTestCase()
{
    QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedKingdom));
}

void TestScheduleText::possibleOnes()
{
    QCOMPARE(m_words.check(record(0, "2026-03-04T12:00:01"), m_now), QString());
    QCOMPARE(m_words.check(record(1, "2020-01-01T08:00:00"), m_now), QString());
    QCOMPARE(m_words.check(record(2, "2020-01-01T08:00:00"), m_now), QString());
}

void TestScheduleText::impossibleOnes_data()
{
    QTest::addColumn<QString>("field");
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<QString>("text");
    QTest::newRow("no name") << "scheduleName" << QVariant(" ") << "Give the schedule a name.";
    QTest::newRow("over") << "scheduleStartTime" << QVariant("2026-03-04T11:59:00")
                          << "It would never run: its time is over.";
    QTest::newRow("no time") << "scheduleStartTime" << QVariant("soon") << "The times make no sense.";
    QTest::newRow("no file") << "audioID" << QVariant(0) << "Choose an audio file.";
    QTest::newRow("nowhere") << "networkAudioIDList" << QVariant(QVariantList())
                             << "Choose at least one speaker or group.";
    QTest::newRow("no such type") << "scheduleType" << QVariant(9) << "The times make no sense.";
}

void TestScheduleText::impossibleOnes()
{
    QFETCH(QString, field);
    QFETCH(QVariant, value);
    QFETCH(QString, text);
    QVariantMap wrong = record(0, "2026-03-05T08:00:00");
    QCOMPARE(m_words.check(wrong, m_now), QString());
    wrong[field] = value;
    QCOMPARE(m_words.check(wrong, m_now), text);
    QVariantMap weekly = record(2, "2026-03-05T08:00:00");
    weekly["scheduleSettings"] = QVariantMap();
    QCOMPARE(m_words.check(weekly, m_now), QString("Choose at least one day of the week."));
}

void TestScheduleText::nextRuns_data()
{
    QTest::addColumn<QVariantMap>("schedule");
    QTest::addColumn<QString>("words");
    QTest::newRow("today") << record(0, "2026-03-04T18:30:00") << "today at 18:30";
    QTest::newRow("tomorrow") << record(1, "2020-01-01T08:00:00") << "tomorrow at 08:00";
    QTest::newRow("monday") << record(2, "2020-01-01T08:00:00") << "on Monday at 08:00";
    QTest::newRow("far") << record(0, "2026-04-01T08:00:00") << "on 01/04/2026 at 08:00";
    QTest::newRow("over") << record(0, "2026-03-01T08:00:00") << "not any more";
    QVariantMap off = record(1, "2020-01-01T08:00:00");
    off["enableSchedule"] = false;
    QTest::newRow("off") << off << "switched off";
    QVariantMap without = record(1, "2020-01-01T08:00:00");
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
    QCOMPARE(m_words.repetition(record(0, "")), QString("once"));
    QCOMPARE(m_words.repetition(record(1, "")), QString("every day"));
    QCOMPARE(m_words.repetition(record(2, "")), QString("Mon, Wed"));
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
    add(record(2, "2020-01-01T08:00:00"));
    QVariantMap daily = record(1, "2026-03-07T07:15:00");
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
    QVERIFY(!m_words.check(QVariantMap(), m_now).isEmpty());
    QCOMPARE(m_words.nextRun(QVariantMap(), m_now), QString("switched off"));
    QCOMPARE(m_words.repetition(QVariantMap()), QString("once"));
}

QTEST_GUILESS_MAIN(TestScheduleText)
#include "tst_scheduletext.moc"
