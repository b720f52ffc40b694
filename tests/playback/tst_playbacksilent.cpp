// Playback on a machine without any sound output.

#include "src/playback/AudioRenderer.h"
#include "tests/support/MediaPackets.h"

#include <QTest>

class TestPlaybackSilent : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void streamIsDropped();
};

void TestPlaybackSilent::streamIsDropped()
{
    AudioRenderer renderer;
    renderer.SetAudioOn(true);
    renderer.SetVolume(100.0);
    for (int i = 0; i < 50; ++i) {
        renderer.Play(MediaPackets::make(QByteArray(640, 'x')), true);
    }
    QVERIFY(renderer.state() == AudioRenderer::State::MuteSink);
    QCOMPARE(renderer.volume(), 100.0);
}

QTEST_GUILESS_MAIN(TestPlaybackSilent)
#include "tst_playbacksilent.moc"
