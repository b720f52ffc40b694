#include "audio/SoundLevel.h"

#include <QTest>

class TestSoundLevel : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void levels();
    void bars();
};

void TestSoundLevel::levels()
{
    QCOMPARE(SoundLevel::rmsDbfs({}), SoundLevel::silence);
    QCOMPARE(SoundLevel::rmsDbfs({0, 0, 0}), SoundLevel::silence);
    QCOMPARE(SoundLevel::rmsDbfs({-32768, -32768}), 0.0);
    QVERIFY(qAbs(SoundLevel::rmsDbfs({16384, -16384}) + 6.02) < 0.01);
    QVERIFY(SoundLevel::rmsDbfs(std::vector<std::int16_t>(100000, 1)) >= SoundLevel::silence);
}

void TestSoundLevel::bars()
{
    QCOMPARE(SoundLevel::bar(0, 4), QStringLiteral("####"));
    QCOMPARE(SoundLevel::bar(20, 4), QStringLiteral("####"));
    QCOMPARE(SoundLevel::bar(-30, 4), QStringLiteral("##.."));
    QCOMPARE(SoundLevel::bar(-60, 4), QStringLiteral("...."));
    QCOMPARE(SoundLevel::bar(SoundLevel::silence, 4), QStringLiteral("...."));
}

QTEST_APPLESS_MAIN(TestSoundLevel)
#include "tst_soundlevel.moc"
