#include "desk/CameraAnswers.h"

#include <QTest>

class TestCameraAnswers : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void found();
    void foundWhatever();
    void abilities();
    void abilitiesWhatever();
};

void TestCameraAnswers::found()
{
    const QVariantList cameras = CameraAnswers::found(
        QVariantList{QVariantMap{{"camName", "Gate"},
                                 {"hardware", "X-1"},
                                 {"location", ""},
                                 {"camAddress", "http://10.0.0.9/onvif/device_service"},
                                 {"remark", "also at http://10.0.0.10/"}},
                     QVariantMap{{"camName", ""}, {"camAddress", ""}, {"remark", "names no address"}}});
    QCOMPARE(cameras.size(), 2);
    QCOMPARE(cameras[0].toMap(), (QVariantMap{{"name", "Gate"},
                                              {"address", "http://10.0.0.9/onvif/device_service"},
                                              {"detail", "X-1  ·  also at http://10.0.0.10/"}}));
    QCOMPARE(cameras[1].toMap(),
             (QVariantMap{{"name", "A camera"}, {"address", ""}, {"detail", "names no address"}}));
}

void TestCameraAnswers::foundWhatever()
{
    QCOMPARE(CameraAnswers::found(QVariant()), QVariantList());
    QCOMPARE(CameraAnswers::found(7), QVariantList());
    QVariantList many{7, QVariant(), QVariantList{1}};
    while (many.size() < 1000) {
        many.append(QVariantMap{{"camName", QString(100000, 'x')},
                                {"camAddress", QString(100000, 'y')},
                                {"hardware", QVariantMap()},
                                {"remark", "a\nb\tc"}});
    }
    const QVariantList cameras = CameraAnswers::found(many);
    QCOMPARE(cameras.size(), CameraAnswers::maxFound);
    for (const QVariant& camera : cameras) {
        const QVariantMap fields = camera.toMap();
        QVERIFY(!fields["name"].toString().isEmpty());
        QVERIFY(fields["name"].toString().size() <= 128);
        QVERIFY(fields["address"].toString().size() <= 1024);
    }
    QCOMPARE(cameras[3].toMap()["detail"], QVariant("a b c"));
}

void TestCameraAnswers::abilities()
{
    const QVariantMap answer{
        {"camId", "1"},
        {"camAddress", "http://10.0.0.9/"},
        {"manufacturer", "Nobody"},
        {"model", "X-1"},
        {"firmware", ""},
        {"hears", "yes"},
        {"hearsReason", ""},
        {"talkCodecs", QVariantList{"PCMU/8000", "G726/8000"}},
        {"speaks", "no"},
        {"speaksReason", "the camera has no microphone"},
        {"voiceCodecs", QVariantList()},
        {"streams", QVariantList{QVariantMap{{"camName", "Main"}, {"camAddress", "rtsp://10.0.0.9/live"}},
                                 QVariantMap{{"camName", "Second"}, {"camAddress", ""}}}},
        {"remarks", QVariantList{"The clock is wrong."}},
        {"error", ""}};
    QCOMPARE(
        CameraAnswers::abilities(answer),
        (QStringList{"Plays what is said: yes, in PCMU/8000, G726/8000",
                     "Can be heard: no (the camera has no microphone)", "Make, model, firmware: Nobody, X-1",
                     "Stream \"Main\": rtsp://10.0.0.9/live", "The clock is wrong."}));
    QVariantMap refused{{"hears", "unknown"},
                        {"hearsReason", "the camera refuses the login"},
                        {"speaks", "yes"},
                        {"error", "the camera refuses the login"}};
    QCOMPARE(
        CameraAnswers::abilities(refused),
        (QStringList{"Not all could be asked: the camera refuses the login",
                     "Plays what is said: not known (the camera refuses the login)", "Can be heard: yes"}));
    // Where nothing is known one sentence says so, once.
    refused["speaks"] = "unknown";
    refused["speaksReason"] = refused["hearsReason"];
    QCOMPARE(CameraAnswers::abilities(refused),
             QStringList("The camera could not be asked: the camera refuses the login"));
    for (const auto& [key, value] :
         {std::pair<QString, QVariant>("model", "X-1"),
          std::pair<QString, QVariant>("remarks", QVariantList{"Old."}),
          std::pair<QString, QVariant>("streams", QVariantList{QVariantMap{{"camName", "Main"}}})}) {
        QVariantMap partly = refused;
        partly[key] = value;
        QVERIFY(CameraAnswers::abilities(partly).size() > 2);
    }
}

/** No claim is made of what a server did not say. */
void TestCameraAnswers::abilitiesWhatever()
{
    const QStringList nothing{"Plays what is said: not known", "Can be heard: not known"};
    QCOMPARE(CameraAnswers::abilities(QVariant()), nothing);
    QCOMPARE(CameraAnswers::abilities(7), nothing);
    QCOMPARE(CameraAnswers::abilities(QVariantMap{{"hears", "YES"}, {"speaks", true}}), nothing);
    QVariantList many;
    while (many.size() < 1000) {
        many.append(QString(100000, '%'));
    }
    const QStringList lines = CameraAnswers::abilities(QVariantMap{{"hears", "yes"},
                                                                   {"talkCodecs", many},
                                                                   {"remarks", many},
                                                                   {"streams", many},
                                                                   {"error", QString(100000, '1')}});
    QVERIFY(lines.size() < 40);
    for (const QString& line : lines) {
        QVERIFY(line.size() < 20 * CameraAnswers::maxText);
    }
}

QTEST_GUILESS_MAIN(TestCameraAnswers)
#include "tst_cameraanswers.moc"
