// voicedesk-decode as an integrator runs it.

#include "audio/AdtsHeader.h"
#include "audio/PacketDump.h"
#include "tests/support/WavFiles.h"

#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>
#include <QtEndian>

class TestDecode : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void dumps_data();
    void dumps();
    void brokenDumps_data();
    void brokenDumps();
    void rawOutput_data();
    void rawOutput();
    void waveOutput();
    void speechCodecs_data();
    void speechCodecs();
    void aacTellsItsFormat();
    void failingPacketsAreNamed();
    void wrongUsage_data();
    void wrongUsage();
    void inputIsKept();
    void unreadableAndUnwritableFiles();
    void helpAndVersion();

private:
    struct Run
    {
        int status;
        QByteArray output;
        QByteArray errors;
    };
    Run run(const QStringList& arguments) const;
    QString path(const char* name) const { return m_folder.filePath(QString::fromLatin1(name)); }

    QTemporaryDir m_folder;
};

namespace {

const QString data = QStringLiteral(TEST_DATA_DIR "/");

QByteArray fileContents(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void writeFile(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(bytes), qint64{bytes.size()});
}

QByteArray record(const QByteArray& packet)
{
    QByteArray length(4, '\0');
    qToLittleEndian(static_cast<quint32>(packet.size()), length.data());
    return length + packet;
}

} // namespace

TestDecode::Run TestDecode::run(const QStringList& arguments) const
{
    QProcess process;
    process.start(QStringLiteral(PROGRAM_DIR "/voicedesk-decode"), arguments);
    if (!process.waitForFinished(60000) || process.exitStatus() != QProcess::NormalExit) {
        return {-1, process.readAllStandardOutput(), process.readAllStandardError()};
    }
    return {process.exitCode(), process.readAllStandardOutput(), process.readAllStandardError()};
}

void TestDecode::dumps_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QList<QByteArray>>("packets");
    QTest::newRow("empty") << QByteArray() << QList<QByteArray>();
    QTest::newRow("one") << record("abc") << QList<QByteArray>{"abc"};
    QTest::newRow("empty packets") << record("") + record("x") + record("") << QList<QByteArray>{"", "x", ""};
}

void TestDecode::dumps()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QList<QByteArray>, packets);
    QString error;
    const auto dump = PacketDump::parse(bytes, &error);
    QVERIFY(dump);
    QCOMPARE(QList<QByteArray>(dump->packets.begin(), dump->packets.end()), packets);
}

void TestDecode::brokenDumps_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("place");
    QTest::newRow("cut length") << record("abc") + QByteArray("\x01\0\0", 3) << "byte 7";
    QTest::newRow("cut packet") << record("abc").left(6) << "byte 0";
    QTest::newRow("absurd length") << QByteArray("\xFF\xFF\xFF\xFFxxxx", 8) << "byte 0";
    QTest::newRow("length of 2 GiB") << QByteArray("\0\0\0\x80xxxx", 8) << "byte 0";
}

void TestDecode::brokenDumps()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, place);
    QString error;
    QVERIFY(!PacketDump::parse(bytes, &error));
    QVERIFY2(error.contains(place), qPrintable(error));
    writeFile(path("broken.rec"), bytes);
    const Run result = run({"--codec", "pcmu", path("broken.rec"), path("broken.wav")});
    QCOMPARE(result.status, 2);
    QVERIFY2(result.errors.contains(place.toLatin1()), result.errors.constData());
    QVERIFY(!QFile::exists(path("broken.wav")));
}

void TestDecode::rawOutput_data()
{
    QTest::addColumn<QStringList>("options");
    QTest::newRow("g711/ulaw") << QStringList{"--codec", "pcmu"};
    QTest::newRow("g711/alaw") << QStringList{"--stream-type", "16384", "--rate", "8000"};
    QTest::newRow("g711/ulaw_2ch") << QStringList{"--codec=pcmu", "--channels=2", "--rate=16000"};
}

void TestDecode::rawOutput()
{
    QFETCH(QStringList, options);
    const QString name = data + QString::fromLatin1(QTest::currentDataTag());
    const Run result = run(options + QStringList{"--raw", name + ".rec", path("out.pcm")});
    QCOMPARE(result.status, 0);
    QCOMPARE(result.errors, QByteArray());
    QCOMPARE(fileContents(path("out.pcm")), fileContents(name + ".pcm"));
}

void TestDecode::waveOutput()
{
    QCOMPARE(run({"--codec", "pcmu", data + "g711/ulaw.rec", path("out.wav")}).status, 0);
    int rate = 0;
    const auto samples = WavFiles::read(path("out.wav"), &rate);
    QCOMPARE(rate, 8000);
    QCOMPARE(QByteArray(reinterpret_cast<const char*>(samples.data()), static_cast<int>(samples.size()) * 2),
             fileContents(data + "g711/ulaw.pcm"));
}

void TestDecode::speechCodecs_data()
{
    QTest::addColumn<QString>("frames");
    QTest::addColumn<int>("rate");
    QTest::newRow("g7221") << "g7221/speech5_24000.g7221" << 16000;
    QTest::newRow("g729a") << "g729a/speech1_dtx1.g729f" << 8000; // with comfort noise
}

void TestDecode::speechCodecs()
{
    QFETCH(QString, frames);
    QFETCH(int, rate);
    const QString codec = QString::fromLatin1(QTest::currentDataTag());
    const QByteArray stream = fileContents(data + frames);
    QByteArray dump;
    for (int at = 0, size = 0; at < stream.size(); at += size) {
        size = codec == "g7221" ? 60 : stream[at] == 1 ? 11 : stream[at] == 2 ? 3 : 1;
        dump += record(stream.mid(at, size));
    }
    writeFile(path("speech.rec"), dump);
    QCOMPARE(run({"--codec", codec, path("speech.rec"), path("speech.wav")}).status, 0);
    int outputRate = 0;
    const auto samples = WavFiles::read(path("speech.wav"), &outputRate);
    QCOMPARE(outputRate, rate);
    QCOMPARE(QByteArray(reinterpret_cast<const char*>(samples.data()), static_cast<int>(samples.size()) * 2),
             fileContents(data + frames.section('.', 0, 0) + ".pcm"));
}

void TestDecode::aacTellsItsFormat()
{
    QCOMPARE(run({"--codec", "aac", data + "aac/mono16k.rec", path("aac.wav")}).status, 0);
    int rate = 0;
    QCOMPARE(WavFiles::read(path("aac.wav"), &rate).size(), std::size_t{37888});
    QCOMPARE(rate, 16000);
    QString error;
    const auto stereo = PacketDump::read(data + "aac/stereo48k.rec", &error);
    const auto header = AdtsHeader::parse(stereo->packets.front());
    QVERIFY(header);
    QCOMPARE(header->sampleRate, 48000U);
    QCOMPARE(int{header->channels}, 2);
    QVERIFY(!AdtsHeader::parse(QByteArray(7, 'x')));
    QVERIFY(!AdtsHeader::parse(stereo->packets.front().left(6)));
}

void TestDecode::failingPacketsAreNamed()
{
    writeFile(path("some.rec"),
              record(QByteArray(160, 'x')) + record(QByteArray(300000, 'x')) + record(QByteArray(160, 'x')));
    const Run result = run({"--codec", "pcmu", "--raw", path("some.rec"), path("some.pcm")});
    QCOMPARE(result.status, 3); // the second is larger than a packet's PCM may be
    QVERIFY(result.errors.contains("packet 1"));
    QCOMPARE(result.errors.count('\n'), 1);
    QCOMPARE(fileContents(path("some.pcm")).size(), 640);
}

void TestDecode::wrongUsage_data()
{
    QTest::addColumn<QStringList>("arguments");
    const QString input = data + QStringLiteral("g711/ulaw.rec");
    QTest::newRow("nothing") << QStringList();
    QTest::newRow("no codec") << QStringList{input, "o.wav"};
    QTest::newRow("two codecs") << QStringList{"--codec", "pcmu", "--stream-type", "8192", input, "o.wav"};
    QTest::newRow("unknown codec") << QStringList{"--codec", "mp3", input, "o.wav"};
    QTest::newRow("type without decoder") << QStringList{"--stream-type", "2048", input, "o.wav"};
    QTest::newRow("no output") << QStringList{"--codec", "pcmu", input};
    QTest::newRow("three files") << QStringList{"--codec", "pcmu", input, "o.wav", "more"};
    QTest::newRow("rate") << QStringList{"--codec", "pcmu", "--rate", "fast", input, "o.wav"};
    QTest::newRow("rate 0") << QStringList{"--codec", "pcmu", "--rate", "0", input, "o.wav"};
    QTest::newRow("channels") << QStringList{"--codec", "pcmu", "--channels", "256", input, "o.wav"};
    QTest::newRow("packing of another codec")
        << QStringList{"--codec", "pcmu", "--packing", "left", input, "o.wav"};
    QTest::newRow("bit rate of another codec")
        << QStringList{"--codec", "aac", "--bit-rate", "32000", input, "o.wav"};
    QTest::newRow("packing") << QStringList{"--codec", "g726", "--packing", "up", input, "o.wav"};
    QTest::newRow("unknown option") << QStringList{"--loud", "--codec", "pcmu", input, "o.wav"};
}

void TestDecode::wrongUsage()
{
    QFETCH(QStringList, arguments);
    const Run result = run(arguments);
    QCOMPARE(result.status, 1);
    QVERIFY(result.errors.startsWith("voicedesk-decode: "));
    QVERIFY(result.errors.contains("--help"));
}

void TestDecode::inputIsKept()
{
    const QByteArray dump = record(QByteArray(160, 'x'));
    writeFile(path("kept.rec"), dump);
    for (const QString& output : {path("kept.rec"), m_folder.path() + "/./kept.rec"}) {
        const Run result = run({"--codec", "pcmu", path("kept.rec"), output});
        QCOMPARE(result.status, 1);
        QVERIFY(result.errors.contains("kept.rec is INPUT and OUTPUT"));
        QCOMPARE(fileContents(path("kept.rec")), dump);
    }
}

void TestDecode::unreadableAndUnwritableFiles()
{
    const Run missing = run({"--codec", "pcmu", path("missing.rec"), path("o.wav")});
    QCOMPARE(missing.status, 2);
    QVERIFY(missing.errors.contains("missing.rec"));
    const Run folder = run({"--codec", "pcmu", m_folder.path(), path("o.wav")});
    QCOMPARE(folder.status, 2);
    const Run nowhere = run({"--codec", "pcmu", data + "g711/ulaw.rec", path("no/such/folder.wav")});
    QCOMPARE(nowhere.status, 2);
    QVERIFY(nowhere.errors.contains("cannot be written"));
}

void TestDecode::helpAndVersion()
{
    const Run help = run({"--help"});
    QCOMPARE(help.status, 0);
    for (const char* word : {"--codec", "--stream-type", "--rate", "--channels", "--bit-rate", "--packing",
                             "--frames", "--raw", "exit status"}) {
        QVERIFY2(help.output.contains(word), word);
    }
    QVERIFY(run({"--version"}).output.startsWith("voicedesk-decode "));
}

QTEST_GUILESS_MAIN(TestDecode)
#include "tst_decode.moc"
