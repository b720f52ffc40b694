#include "system/EnvironmentVariable.h"

#include <QTest>

class TestEnvironmentVariable : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void keepsAllCharacters();
};

void TestEnvironmentVariable::keepsAllCharacters()
{
    for (const QString& value : {QStringLiteral("plain"), QStringLiteral("C:/Grüße/世界 🔔.wav")}) {
        setEnvironmentVariable("VOICEDESK_TEST_VALUE", value);
        QCOMPARE(qEnvironmentVariable("VOICEDESK_TEST_VALUE"), value);
    }
}

QTEST_GUILESS_MAIN(TestEnvironmentVariable)
#include "tst_environmentvariable.moc"
