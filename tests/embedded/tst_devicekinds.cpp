// A server of our programs has each kind of devices that has a folder, or says why not.

#include "embedded/ClientOptions.h"

#include <QDir>
#include <QTest>

class TestDeviceKinds : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyFolderIsAKind();
    void simulatedSpeakersAreLast();
};

namespace {

template<class Kinds>
QStringList namesOf(const Kinds& kinds)
{
    QStringList names;
    for (const auto& kind : kinds) {
        names.append(kind.name);
    }
    return names;
}

DeviceKinds allKinds()
{
    ClientOptions options;
    options.simulated.hasCameras = true;
    return options.serverConfig().devices;
}

} // namespace

void TestDeviceKinds::everyFolderIsAKind()
{
    const DeviceKinds kinds = allKinds();
    const QStringList cameras = namesOf(kinds.cameras);
    const QStringList speakers = namesOf(kinds.speakers);
    QSet<QString> names(cameras.begin(), cameras.end());
    names.unite(QSet<QString>(speakers.begin(), speakers.end()));
    for (const AbsentCameraKind& absent : kinds.absentCameras) {
        QVERIFY2(!cameras.contains(absent.name) && !absent.reason.isEmpty(), qPrintable(absent.name));
        names.insert(absent.name);
    }
    const QStringList folders = QDir(QStringLiteral(PROJECT_FOLDER "/server/devices"))
                                    .entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name);
    QVERIFY(folders.contains("simulated"));
    QCOMPARE(names, QSet<QString>(folders.begin(), folders.end()));
    QCOMPARE(QSet<QString>(cameras.begin(), cameras.end()).size(), cameras.size());
}

/** They serve any address, and the first kind that serves a speaker counts. */
void TestDeviceKinds::simulatedSpeakersAreLast()
{
    QCOMPARE(namesOf(allKinds().speakers).last(), QString("simulated"));
}

QTEST_GUILESS_MAIN(TestDeviceKinds)
#include "tst_devicekinds.moc"
