#include "system/MediaFiles.h"
#include "tests/support/SoundFiles.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

class TestMediaFiles : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void anyName_data();
    void anyName();
    void whatIsNoSoundFile();

private:
    QTemporaryDir m_folder;
};

void TestMediaFiles::anyName_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("plain") << "tone";
    QTest::newRow("of one code page") << "Grüße";
    QTest::newRow("of none") << "Grüße 世界 🔔";
}

void TestMediaFiles::anyName()
{
    QFETCH(QString, name);
    const auto tone = WavFiles::sine(440, 0.5, 1.5, 8000);
    const QString wav = m_folder.filePath(name + ".wav");
    {
        SF_INFO info{};
        info.samplerate = 8000;
        info.channels = 1;
        info.format = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
        SNDFILE* file = MediaFiles::open(wav, SFM_WRITE, &info);
        QVERIFY2(file != nullptr, sf_strerror(nullptr));
        QCOMPARE(sf_write_short(file, tone.data(), static_cast<sf_count_t>(tone.size())),
                 static_cast<sf_count_t>(tone.size()));
        sf_close(file);
    }
    QVERIFY(QFile::exists(wav)); // under the name that Qt knows it by
    QCOMPARE(WavFiles::read(wav), tone);
    QCOMPARE(MediaFiles::duration(wav), 1.5);
    const QString mp3 = m_folder.filePath(name + ".mp3");
    QVERIFY(SoundFiles::write(mp3, tone, 8000)); // by FFmpeg
    QVERIFY(QFile::exists(mp3));
}

void TestMediaFiles::whatIsNoSoundFile()
{
    QVERIFY(MediaFiles::duration(m_folder.filePath("absent.wav")) < 0);
    QFile text(m_folder.filePath("text.wav"));
    QVERIFY(text.open(QIODevice::WriteOnly));
    text.write("no sound");
    text.close();
    QVERIFY(MediaFiles::duration(text.fileName()) < 0);
}

QTEST_GUILESS_MAIN(TestMediaFiles)
#include "tst_mediafiles.moc"
