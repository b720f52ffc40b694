#include "platform/PluginBase.h"
#include "tests/support/BuiltLibraries.h"

#include <QFileInfo>
#include <QJsonObject>
#include <QPluginLoader>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

class TestPluginLoading : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void metadata();
    void oneInstance();
    void exportedClasses();
    void withoutTheLogLibrary();
    void withTheLogLibrary();
};

namespace {

const QString pluginPath = BuiltLibraries::path("VoiceDesk");

QStringList runProbe(const QString& plugin, const QString& logFile)
{
    QProcess probe;
#if defined(Q_OS_WIN) || defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    // Windows looks in its path. A sanitizer calls the loader in our place, which then does not see our
    // library's own search path.
    QProcessEnvironment environment = BuiltLibraries::environmentFor(QFileInfo(plugin).path());
#else
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
#endif
    environment.insert("TRELLOG_LEVEL", "5");
    environment.insert("TRELLOG_FILE", logFile);
    probe.setProcessEnvironment(environment);
    probe.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    probe.start(QStringLiteral(PROBE_DIR "/plugin_probe"), {plugin});
    if (!probe.waitForFinished() || probe.exitStatus() != QProcess::NormalExit || probe.exitCode() != 0) {
        return {"failed", QString::fromLocal8Bit(probe.readAllStandardOutput())};
    }
    return QString::fromLocal8Bit(probe.readAllStandardOutput()).remove('\r').split('\n', Qt::SkipEmptyParts);
}

const QStringList expectedOutput{"initialised 1", "command RetrieveIPAudioModel", "command GetAudioFile"};

} // namespace

void TestPluginLoading::metadata()
{
    const QPluginLoader loader(pluginPath);
    const QJsonObject data = loader.metaData();
    QCOMPARE(data["IID"].toString(), QStringLiteral("com.QUARNEL.UIFramework.PluginInterface"));
    QCOMPARE(data["className"].toString(), QStringLiteral("PluginVoiceDesk"));
    QCOMPARE(data["MetaData"].toObject(),
             (QJsonObject{{"ClientOnly", false}, {"PluginID", "710EF4C43CF94BB2A4A359E0796BC4F5"}}));

    QFile file(pluginPath);
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray bytes = file.readAll();
    const int block = bytes.indexOf("QTMETADATA !");
    QVERIFY(block >= 0);
    QCOMPARE(bytes.mid(block + 12, 2), QByteArray("\0\5", 2)); // version 0, Qt major 5
    QCOMPARE(int{bytes[block + 14]}, QT_VERSION_MINOR);
}

void TestPluginLoading::oneInstance()
{
    QPluginLoader loader(pluginPath);
    QPointer<QObject> first = loader.instance();
    QVERIFY2(first, qPrintable(loader.errorString()));
    QCOMPARE(first->parent(), nullptr);
    using Instance = QObject* (*)();
    QLibrary library(pluginPath);
    const auto instance = reinterpret_cast<Instance>(library.resolve("qt_plugin_instance"));
    QVERIFY(instance != nullptr);
    QVERIFY(library.resolve("qt_plugin_query_metadata") != nullptr);
    QCOMPARE(instance(), first.data());
    QCOMPARE(instance(), first.data());
    delete first;
    QPointer<QObject> second = instance();
    QVERIFY(second);
    QCOMPARE(instance(), second.data());
    QVERIFY(qobject_cast<PluginBase*>(second.data()) != nullptr);
    delete second;
}

void TestPluginLoading::exportedClasses()
{
    QLibrary library(pluginPath);
    for (const char* symbol :
         {"_ZN15PluginVoiceDesk8stopTalkEv", "_ZN15PluginVoiceDesk17startTalkResponseEb",
          "_ZN15PluginVoiceDesk15handleStartTalkE8QVariantPv7QStringS2_bRKS2_",
          "_ZN17FrameSmithWrapper17StartAudioCaptureEv", "_ZN17FrameSmithWrapper7InitialEv",
          "_ZN17FrameSmithWrapper16staticMetaObjectE"}) {
        QVERIFY2(library.resolve(symbol) != nullptr, symbol);
    }
    QVERIFY(library.resolve("_Z12Base64EncodePKhjPcj") == nullptr); // not part of the interface
}

void TestPluginLoading::withoutTheLogLibrary()
{
    QTemporaryDir folder;
    for (const char* name : {"VoiceDesk", "FrameSmith", "SoundTap"}) {
        QVERIFY(QFile::copy(BuiltLibraries::path(name), folder.filePath(BuiltLibraries::fileName(name))));
    }
    QCOMPARE(runProbe(folder.filePath(BuiltLibraries::fileName("VoiceDesk")), folder.filePath("log")),
             expectedOutput);
    QVERIFY(!QFile::exists(folder.filePath("log")));
}

void TestPluginLoading::withTheLogLibrary()
{
    QTemporaryDir folder;
    QCOMPARE(runProbe(pluginPath, folder.filePath("log")), expectedOutput);
    QFile log(folder.filePath("log"));
    QVERIFY(log.open(QIODevice::ReadOnly));
    const QByteArray text = log.readAll().replace('\r', "");
    for (const char* line :
         {"VoiceDesk 5 PluginVoiceDesk::Init, Enter\n", "VoiceDesk 5 PluginVoiceDesk::Init, Leave\n",
          "VoiceDesk 5 PluginVoiceDesk::~PluginVoiceDesk, Enter\n",
          "VoiceDesk 5 PluginVoiceDesk::~PluginVoiceDesk, Leave\n"}) {
        QVERIFY2(text.contains(line), text.constData());
    }
}

QTEST_GUILESS_MAIN(TestPluginLoading)
#include "tst_pluginloading.moc"
