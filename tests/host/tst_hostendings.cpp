// Hosts end by return and by exit, whatever they do with the plug-in and whatever it does then: nothing
// crashes in what runs after that.

#include "tests/support/BuiltLibraries.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/PulseServer.h"

#include <QProcess>
#include <QTest>

#include <functional>
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
    struct Place
    {
        std::unique_ptr<PulseServer> pulse;
        QProcessEnvironment environment;
    };
    std::vector<Place> m_places;
};

namespace {

#if defined(Q_OS_WIN) || defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__) // slow
constexpr std::size_t rounds = 2;
#else
constexpr std::size_t rounds = 10;
#endif
// Hosts that run at once, each with a sound server of its own: it tells each host of the others' streams, and
// Qt's PulseAudio plug-in cannot bear such a message while its static objects are destroyed.
constexpr int atOnce = 4;
constexpr int timeout = 60000; // ms

} // namespace

void TestHostEndings::initTestCase()
{
    for (int i = 0; i < atOnce; ++i) {
        auto pulse = std::make_unique<PulseServer>();
        QVERIFY(pulse->ready());
        m_places.push_back({std::move(pulse), BuiltLibraries::environmentFor(QStringLiteral(PLUGIN_DIR))});
    }
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
    std::vector<std::unique_ptr<QProcess>> hosts;
    int ended = 0;
    const QObject* receiver = nullptr;
    const std::function<void(const Place&)> startOne = [&](const Place& place) {
        if (hosts.size() == rounds) {
            return;
        }
        hosts.push_back(std::make_unique<ChildProcess>());
        QProcess& host = *hosts.back();
        host.setProcessEnvironment(place.environment);
        host.setProcessChannelMode(QProcess::ForwardedOutputChannel);
        connect(&host, QOverload<int, QProcess::ExitStatus>::of(&QProcess::finished), receiver, [&] {
            ++ended;
            startOne(place);
        });
        host.start(QStringLiteral(HOST_DIR "/ending_host"), arguments);
    };
    const QObject untilHere; // what ends later finds nothing of this function
    receiver = &untilHere;
    for (const Place& place : m_places) {
        startOne(place);
    }
    QTRY_COMPARE_WITH_TIMEOUT(ended, int{rounds}, timeout);
    for (const auto& host : hosts) {
        const QByteArray said = host->readAllStandardError();
        QVERIFY2(host->exitStatus() == QProcess::NormalExit && host->exitCode() == 0, said.constData());
    }
}

QTEST_GUILESS_MAIN(TestHostEndings)
#include "tst_hostendings.moc"
