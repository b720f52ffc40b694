// Playbacks as the desk keeps them, over a stand-in for the plug-in's signals and invokables.

#include "desk/PlaybackBook.h"

#include <QAbstractItemModelTester>
#include <QSignalSpy>
#include <QTest>

/** What of the plug-in playback needs. */
class FakePlayer : public QObject
{
    Q_OBJECT

public:
    Q_INVOKABLE void playAudio(int device, int file)
    {
        calls.append(QString("play %1 %2").arg(device).arg(file));
    }
    Q_INVOKABLE void playGroupAudio(int group, int file)
    {
        calls.append(QString("playGroup %1 %2").arg(group).arg(file));
    }
    Q_INVOKABLE void stopCurrentAudio(int device) { calls.append(QString("stop %1").arg(device)); }
    Q_INVOKABLE void stopCurrentGroupAudio(int group) { calls.append(QString("stopGroup %1").arg(group)); }

    QStringList calls;

Q_SIGNALS:
    void playAudioResponse(bool success, int progress, const QString& errorCode, int ipAudioId);
    void playAudioError(const QString& ipAudioName, const QString& audioFileName, const QString& errorCode,
                        const QString& alarmName);
};

class TestPlaybackBook : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void fromStartToEnd();
    void stopAndDismiss();
    void refused();
    void severalAtOnce();
    void aNewFileTakesThePlace();
    void errorsOutsideOfReplies();
    void noAnswer();
    void lostConnection();
    void anotherServer();
    void unexpectedAnswers();

private:
    QVariant field(int row, PlaybackBook::Role role) const { return m_book->index(row).data(role); }

    std::unique_ptr<FakePlayer> m_player;
    std::unique_ptr<PlaybackBook> m_book;
};

void TestPlaybackBook::init()
{
    m_book.reset();
    m_player = std::make_unique<FakePlayer>();
    m_book = std::make_unique<PlaybackBook>(m_player.get());
    new QAbstractItemModelTester(m_book.get(), QAbstractItemModelTester::FailureReportingMode::QtTest,
                                 m_book.get());
}

void TestPlaybackBook::fromStartToEnd()
{
    m_book->play(false, 3, "Hall", 8, "bell.wav", 4000);
    QCOMPARE(m_player->calls, QStringList{"play 3 8"});
    QCOMPARE(field(0, PlaybackBook::StateRole).toInt(), int{PlaybackBook::Asked});
    QCOMPARE(field(0, PlaybackBook::TitleRole).toString(), QString("bell.wav"));
    QCOMPARE(field(0, PlaybackBook::TargetRole).toString(), QString("Hall"));
    Q_EMIT m_player->playAudioResponse(true, 0, QString(), 0);
    QCOMPARE(field(0, PlaybackBook::StateRole).toInt(), int{PlaybackBook::Playing});
    Q_EMIT m_player->playAudioResponse(true, 40, QString(), 0);
    QCOMPARE(field(0, PlaybackBook::ProgressRole).toReal(), 0.4);
    Q_EMIT m_player->playAudioResponse(true, 100, QString(), 0);
    QCOMPARE(field(0, PlaybackBook::StateRole).toInt(), int{PlaybackBook::Ended});
    QCOMPARE(field(0, PlaybackBook::ProgressRole).toReal(), 1.0);
}

void TestPlaybackBook::stopAndDismiss()
{
    m_book->play(true, 5, "Yard", 8, "bell.wav", 4000);
    QCOMPARE(m_player->calls.last(), QString("playGroup 5 8"));
    m_book->stop(0);
    QCOMPARE(m_player->calls.last(), QString("stopGroup 5"));
    QCOMPARE(m_book->rowCount(), 0);
    m_book->play(false, 5, "Hall", 8, "bell.wav", 4000);
    m_book->stop(0);
    QCOMPARE(m_player->calls.last(), QString("stop 5"));
    m_book->stop(0); // rows that are not there
    m_book->dismiss(-1);
    m_book->dismiss(7);
    QCOMPARE(m_player->calls.size(), 4);
}

void TestPlaybackBook::refused()
{
    m_book->play(false, 3, "Hall", 8, "bell.wav", 4000);
    m_book->play(false, 4, "Stairs", 8, "bell.wav", 4000);
    Q_EMIT m_player->playAudioResponse(false, 0, "it is offline", 4);
    QCOMPARE(field(0, PlaybackBook::StateRole).toInt(), int{PlaybackBook::Asked});
    QCOMPARE(field(1, PlaybackBook::StateRole).toInt(), int{PlaybackBook::Failed});
    QCOMPARE(field(1, PlaybackBook::ProblemRole).toString(), QString("it is offline"));
    Q_EMIT m_player->playAudioResponse(false, 0, QString(), 3);
    QCOMPARE(field(0, PlaybackBook::ProblemRole).toString(), QString("the server refuses it"));
}

void TestPlaybackBook::severalAtOnce()
{
    // Progress comes without a name: the clock takes its place.
    m_book->play(false, 3, "Hall", 8, "bell.wav", 600);
    m_book->play(true, 3, "Yard", 8, "bell.wav", 600);
    Q_EMIT m_player->playAudioResponse(true, 0, QString(), 0);
    Q_EMIT m_player->playAudioResponse(true, 0, QString(), 0);
    QCOMPARE(field(0, PlaybackBook::StateRole).toInt(), int{PlaybackBook::Playing});
    QCOMPARE(field(1, PlaybackBook::StateRole).toInt(), int{PlaybackBook::Playing});
    Q_EMIT m_player->playAudioResponse(true, 100, QString(), 0); // whose?
    QCOMPARE(field(0, PlaybackBook::StateRole).toInt(), int{PlaybackBook::Playing});
    QTRY_VERIFY(field(0, PlaybackBook::ProgressRole).toReal() > 0.4);
    QTRY_COMPARE(field(1, PlaybackBook::StateRole).toInt(), int{PlaybackBook::Ended});
    QTRY_COMPARE(field(0, PlaybackBook::StateRole).toInt(), int{PlaybackBook::Ended});
}

void TestPlaybackBook::aNewFileTakesThePlace()
{
    m_book->play(false, 3, "Hall", 8, "bell.wav", 4000);
    m_book->play(false, 3, "Hall", 9, "gong.wav", 4000);
    QCOMPARE(m_book->rowCount(), 1);
    QCOMPARE(field(0, PlaybackBook::TitleRole).toString(), QString("gong.wav"));
}

void TestPlaybackBook::errorsOutsideOfReplies()
{
    QSignalSpy failed(m_book.get(), &PlaybackBook::failed);
    m_book->play(false, 3, "Hall", 8, "bell.wav", 4000);
    Q_EMIT m_player->playAudioError("Hall", "bell.wav", "no route", QString());
    QCOMPARE(field(0, PlaybackBook::StateRole).toInt(), int{PlaybackBook::Failed});
    QCOMPARE(failed.last()[0].toString(), QString("\"bell.wav\" was not played on Hall: no route"));
    Q_EMIT m_player->playAudioError("Roof", "bell.wav", "no route", "Opening");
    QCOMPARE(failed.last()[0].toString(),
             QString("Schedule \"Opening\": \"bell.wav\" was not played on Roof: no route"));
}

void TestPlaybackBook::noAnswer()
{
    m_book->play(false, 3, "Hall", 8, "bell.wav", 4000);
    m_book->play(true, 4, "Yard", 8, "bell.wav", 4000);
    m_book->timedOut("PlayGroupAudio");
    QCOMPARE(field(0, PlaybackBook::StateRole).toInt(), int{PlaybackBook::Asked});
    QCOMPARE(field(1, PlaybackBook::StateRole).toInt(), int{PlaybackBook::Failed});
    m_book->timedOut("AddIPAudio");
    QCOMPARE(field(0, PlaybackBook::StateRole).toInt(), int{PlaybackBook::Asked});
}

void TestPlaybackBook::lostConnection()
{
    m_book->play(false, 3, "Hall", 8, "bell.wav", 4000);
    Q_EMIT m_player->playAudioResponse(true, 10, QString(), 0);
    m_book->forget();
    QCOMPARE(field(0, PlaybackBook::StateRole).toInt(), int{PlaybackBook::Failed});
    QCOMPARE(field(0, PlaybackBook::ProblemRole).toString(),
             QString("the connection to the server was lost"));
}

void TestPlaybackBook::anotherServer()
{
    m_book->play(false, 3, "Hall", 8, "bell.wav", 4000);
    m_book->play(true, 4, "Yard", 8, "bell.wav", 4000);
    QSignalSpy counts(m_book.get(), &PlaybackBook::countChanged);
    m_book->clear();
    QCOMPARE(m_book->rowCount(), 0);
    QCOMPARE(counts.size(), 1);
}

void TestPlaybackBook::unexpectedAnswers()
{
    Q_EMIT m_player->playAudioResponse(true, 50, QString(), 0);
    Q_EMIT m_player->playAudioResponse(false, 0, "x", 9);
    QCOMPARE(m_book->rowCount(), 0);
    QCOMPARE(m_book->data(QModelIndex(), PlaybackBook::TitleRole), QVariant());
}

QTEST_GUILESS_MAIN(TestPlaybackBook)
#include "tst_playbackbook.moc"
