#include "desk/ScheduleValidator.h"
#include "tests/desk/ScheduleRecord.h"

#include <QTest>

class TestScheduleValidator : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void possibleOnes();
    void impossibleOnes_data();
    void impossibleOnes();
    void brokenRecords();
    void groupsAlone();
    void withoutAMoment();

private:
    const QString m_now = "2026-03-04T12:00:00"; // a Wednesday
    ScheduleValidator m_validator;
};

void TestScheduleValidator::possibleOnes()
{
    QCOMPARE(m_validator.check(scheduleRecord(0, "2026-03-04T12:00:01"), m_now), QString());
    QCOMPARE(m_validator.check(scheduleRecord(1, "2020-01-01T08:00:00"), m_now), QString());
    QCOMPARE(m_validator.check(scheduleRecord(2, "2020-01-01T08:00:00"), m_now), QString());
}

void TestScheduleValidator::impossibleOnes_data()
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

void TestScheduleValidator::impossibleOnes()
{
    QFETCH(QString, field);
    QFETCH(QVariant, value);
    QFETCH(QString, text);
    QVariantMap wrong = scheduleRecord(0, "2026-03-05T08:00:00");
    QCOMPARE(m_validator.check(wrong, m_now), QString());
    wrong[field] = value;
    QCOMPARE(m_validator.check(wrong, m_now), text);
    QVariantMap weekly = scheduleRecord(2, "2026-03-05T08:00:00");
    weekly["scheduleSettings"] = QVariantMap();
    QCOMPARE(m_validator.check(weekly, m_now), QString("Choose at least one day of the week."));
}

void TestScheduleValidator::brokenRecords()
{
    QVERIFY(!m_validator.check(QVariantMap(), m_now).isEmpty());
}

void TestScheduleValidator::groupsAlone()
{
    QVariantMap record = scheduleRecord(1, "2026-03-05T08:00:00");
    record["networkAudioIDList"] = QVariantList();
    record["groupIDList"] = QVariantList{3};
    QCOMPARE(m_validator.check(record, m_now), QString());
}

/** Without a moment, now counts. */
void TestScheduleValidator::withoutAMoment()
{
    const auto checkDay = [this](int days) {
        const QString start = QDateTime::currentDateTime().addDays(days).toString(Qt::ISODate);
        return m_validator.check(scheduleRecord(0, qPrintable(start)));
    };
    QCOMPARE(checkDay(2), QString());
    QCOMPARE(checkDay(-2), QString("It would never run: its time is over."));
    QVERIFY(!ScheduleValidator::momentOf("soon").isValid());
}

QTEST_GUILESS_MAIN(TestScheduleValidator)
#include "tst_schedulevalidator.moc"
