// The program with a microphone: one that hears, and one that says nothing.

#include "tests/support/ProgramRun.h"
#include "tests/support/PulseServer.h"
#include "tests/support/SignalMeasure.h"
#include "tests/support/WavFiles.h"

#include <QTemporaryDir>
#include <QTest>

class TestTalkMicrophone : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void hears();
    void saysNothing();

private:
    std::unique_ptr<PulseServer> m_pulse;
    QTemporaryDir m_folder;
};

void TestTalkMicrophone::initTestCase()
{
    m_pulse = std::make_unique<PulseServer>();
    QVERIFY2(m_pulse->ready(), "no PulseAudio server; is pulseaudio installed?");
}

void TestTalkMicrophone::hears()
{
    const QString tone = m_folder.filePath("tone.wav");
    QVERIFY(WavFiles::write(tone, WavFiles::sine(600, 0.5, 9.0, 44100), 44100));
    const auto speaking = m_pulse->speak(tone);
    // A null sink's monitor takes up to two seconds to deliver its first sound.
    const ProgramRun result =
        ProgramRun::of("voicedesk", m_folder.path(), {"talk", "--mic", "--seconds", "6", "--output", "mic"});
    QVERIFY2(result.status == 0, qPrintable(result.err));
    auto heard = WavFiles::read(result.line("recording"));
    QVERIFY2(heard.size() > 16000, qPrintable(result.err));
    heard.erase(heard.begin(), heard.begin() + 8000); // the server may still have been starting to speak
    const double frequency = SignalMeasure::medianFrequency(heard, 8000);
    QVERIFY2(qAbs(frequency - 600.0) < 3.0, qPrintable(QString::number(frequency)));
    QVERIFY(qAbs(SignalMeasure::levelDbfs(heard) - -9.03) < 0.7);
}

void TestTalkMicrophone::saysNothing()
{
    // It opens, and then nothing comes at all.
    m_pulse->control({"suspend-source", "virtmic", "1"});
    m_pulse->control({"suspend-source", "mic.monitor", "1"});
    const ProgramRun dead =
        ProgramRun::of("voicedesk", m_folder.path(), {"talk", "--mic", "--seconds", "1", "--output", "dead"});
    QVERIFY2(dead.err.contains("nothing was sent"), qPrintable(dead.err));
    QCOMPARE(dead.status, 7);
}

QTEST_GUILESS_MAIN(TestTalkMicrophone)
#include "tst_talkmicrophone.moc"
