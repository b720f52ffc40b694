// Hosts end by return and by exit, whatever they do with the plug-in and whatever it does then: nothing
// crashes in what runs after that.

#include "BuiltLibraries.h"
#include "PulseServer.h"

#include <QProcess>
#include <QTest>

#include <memory>
#include <vector>

class TestHostEndings : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void endings_data();
    void endings();

private:
    std::unique_ptr<PulseServer> m_pulse;
};

namespace {

#if defined(Q_OS_WIN) || defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__) // slow
constexpr int rounds = 2;
#else
constexpr int rounds = 10;
#endif
constexpr int atOnce = 10;
constexpr int timeout = 60000; // ms

} // namespace

void TestHostEndings::initTestCase()
{
    m_pulse = std::make_unique<PulseServer>();
    QVERIFY(m_pulse->ready());
}

void TestHostEndings::endings_data()
{
    QTest::addColumn<QStringList>("words");
    for (const char* what : {"rest", "sound", "talk"}) {
        for (const char* becomes : {"delete", "unload", "gone", "left", "late", "again"}) {
            for (const char* how : {"return", "exit"}) {
                if (QByteArray(becomes) == "late" && QByteArray(how) == "exit") {
                    continue; // there is no application left that it could leave
                }
                const QByteArray name = QByteArray(what) + ' ' + becomes + ' ' + how;
                QTest::newRow(name.constData()) << QString::fromLatin1(name).split(' ');
            }
        }
    }
}

void TestHostEndings::endings()
{
    QFETCH(QStringList, words);
    const QStringList arguments = QStringList{BuiltLibraries::path("VoiceDesk")} + words;
    for (int done = 0; done < rounds; done += atOnce) {
        std::vector<std::unique_ptr<QProcess>> hosts;
        for (int i = done; i < std::min(done + atOnce, rounds); ++i) {
            hosts.push_back(std::make_unique<QProcess>());
            hosts.back()->setProcessEnvironment(BuiltLibraries::environmentFor(QStringLiteral(PLUGIN_DIR)));
            hosts.back()->setProcessChannelMode(QProcess::ForwardedChannels);
            hosts.back()->start(QStringLiteral(HOST_DIR "/ending_host"), arguments);
        }
        for (const auto& host : hosts) {
            QVERIFY(host->waitForFinished(timeout));
            QCOMPARE(host->exitStatus(), QProcess::NormalExit);
            QCOMPARE(host->exitCode(), 0);
        }
    }
}

QTEST_GUILESS_MAIN(TestHostEndings)
#include "tst_hostendings.moc"
