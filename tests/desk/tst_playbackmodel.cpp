// Playbacks as the desk keeps them, over a stand-in for the plug-in's signals and invokables.

#include "client/PluginClient.h"
#include "desk/PlaybackModel.h"
#include "desk/RequestTimeouts.h"

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
        watch.commandSent("PlayAudio", QVariant(), true, ++request);
        calls.append(QString("play %1 %2").arg(device).arg(file));
    }
    Q_INVOKABLE void playGroupAudio(int group, int file)
    {
        watch.commandSent("PlayGroupAudio", QVariant(), true, ++request);
        calls.append(QString("playGroup %1 %2").arg(group).arg(file));
    }
    Q_INVOKABLE void stopCurrentAudio(int device) { calls.append(QString("stop %1").arg(device)); }
    Q_INVOKABLE void stopCurrentGroupAudio(int group) { calls.append(QString("stopGroup %1").arg(group)); }

    QStringList calls;
    RequestTimeouts watch;
    quint64 request = 0; ///< Of the last playback.

Q_SIGNALS:
    void playAudioError(const QString& ipAudioName, const QString& audioFileName, const QString& errorCode,
                        const QString& alarmName);
};

class TestPlaybackModel : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void fromStartToEnd();
    void stopAndDismiss();
    void refused();
    void severalAtOnce();
    void endWithoutAReply();
    void aNewFileTakesThePlace();
    void errorsOutsideOfReplies();
    void noAnswer();
    void lostConnection();
    void anotherServer();
    void unexpectedAnswers();

private:
    void progress(quint64 request, int percent)
    {
        m_book->replyArrived("PlayAudio", "0", QString(), request, QVariantMap{{"progress", percent}});
    }
    QVariant field(int row, PlaybackModel::Role role) const { return m_book->index(row).data(role); }

    std::unique_ptr<FakePlayer> m_player;
    std::unique_ptr<PluginClient> m_plugin;
    std::unique_ptr<PlaybackModel> m_book;
};

void TestPlaybackModel::init()
{
    m_book.reset();
    m_player = std::make_unique<FakePlayer>();
    m_plugin = std::make_unique<PluginClient>();
    m_plugin->attach(m_player.get()); // which has what playback needs
    m_book = std::make_unique<PlaybackModel>(*m_plugin, m_player->watch);
    new QAbstractItemModelTester(m_book.get(), QAbstractItemModelTester::FailureReportingMode::QtTest,
                                 m_book.get());
}

void TestPlaybackModel::fromStartToEnd()
{
    m_book->play(false, 3, "Hall", 8, "bell.wav", 4000);
    QCOMPARE(m_player->calls, QStringList{"play 3 8"});
    QCOMPARE(field(0, PlaybackModel::StateRole).toInt(), int{PlaybackModel::Asked});
    QCOMPARE(field(0, PlaybackModel::TitleRole).toString(), QString("bell.wav"));
    QCOMPARE(field(0, PlaybackModel::TargetRole).toString(), QString("Hall"));
    progress(1, 0);
    QCOMPARE(field(0, PlaybackModel::StateRole).toInt(), int{PlaybackModel::Playing});
    progress(1, 40);
    QCOMPARE(field(0, PlaybackModel::ProgressRole).toReal(), 0.4);
    progress(1, 100);
    QCOMPARE(field(0, PlaybackModel::StateRole).toInt(), int{PlaybackModel::Ended});
    QCOMPARE(field(0, PlaybackModel::ProgressRole).toReal(), 1.0);
}

void TestPlaybackModel::stopAndDismiss()
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

void TestPlaybackModel::refused()
{
    m_book->play(false, 3, "Hall", 8, "bell.wav", 4000);
    m_book->play(false, 4, "Stairs", 8, "bell.wav", 4000);
    m_book->replyArrived("PlayAudio", "999", "it is asleep", 2, 4);
    QCOMPARE(field(0, PlaybackModel::StateRole).toInt(), int{PlaybackModel::Asked});
    QCOMPARE(field(1, PlaybackModel::StateRole).toInt(), int{PlaybackModel::Failed});
    QCOMPARE(field(1, PlaybackModel::ProblemRole).toString(), QString("it is asleep"));
    m_book->replyArrived("PlayAudio", "206", "no route", 1, 3);
    QCOMPARE(field(0, PlaybackModel::ProblemRole).toString(), QString("the speaker is offline"));
}

void TestPlaybackModel::severalAtOnce()
{
    m_book->play(false, 3, "Hall", 8, "bell.wav", 60000);
    m_book->play(true, 3, "Yard", 8, "bell.wav", 60000);
    progress(2, 0);
    QCOMPARE(field(0, PlaybackModel::StateRole).toInt(), int{PlaybackModel::Asked});
    QCOMPARE(field(1, PlaybackModel::StateRole).toInt(), int{PlaybackModel::Playing});
    progress(1, 30);
    progress(2, 50);
    QCOMPARE(field(0, PlaybackModel::ProgressRole).toReal(), 0.3);
    QCOMPARE(field(1, PlaybackModel::ProgressRole).toReal(), 0.5);
    progress(1, 100);
    QCOMPARE(field(0, PlaybackModel::StateRole).toInt(), int{PlaybackModel::Ended});
    QCOMPARE(field(1, PlaybackModel::StateRole).toInt(), int{PlaybackModel::Playing});
    progress(1, 40); // after its end
    QCOMPARE(field(0, PlaybackModel::ProgressRole).toReal(), 1.0);
}

void TestPlaybackModel::endWithoutAReply()
{
    m_book->play(false, 3, "Hall", 8, "bell.wav", 300);
    progress(1, 0);
    QTRY_COMPARE(field(0, PlaybackModel::StateRole).toInt(), int{PlaybackModel::Ended});
}

void TestPlaybackModel::aNewFileTakesThePlace()
{
    m_book->play(false, 3, "Hall", 8, "bell.wav", 4000);
    m_book->play(false, 3, "Hall", 9, "gong.wav", 4000);
    QCOMPARE(m_book->rowCount(), 1);
    QCOMPARE(field(0, PlaybackModel::TitleRole).toString(), QString("gong.wav"));
}

void TestPlaybackModel::errorsOutsideOfReplies()
{
    QSignalSpy failed(m_book.get(), &PlaybackModel::failed);
    m_book->play(false, 3, "Hall", 8, "bell.wav", 4000);
    Q_EMIT m_player->playAudioError("Hall", "bell.wav", "no route", QString());
    QCOMPARE(field(0, PlaybackModel::StateRole).toInt(), int{PlaybackModel::Failed});
    QCOMPARE(failed.last()[0].toString(), QString("\"bell.wav\" was not played on Hall: no route"));
    Q_EMIT m_player->playAudioError("Roof", "bell.wav", "no route", "Opening");
    QCOMPARE(failed.last()[0].toString(),
             QString("Schedule \"Opening\": \"bell.wav\" was not played on Roof: no route"));
}

void TestPlaybackModel::noAnswer()
{
    m_book->play(false, 3, "Hall", 8, "bell.wav", 4000);
    m_book->play(true, 4, "Yard", 8, "bell.wav", 4000);
    m_book->timedOut(2);
    QCOMPARE(field(0, PlaybackModel::StateRole).toInt(), int{PlaybackModel::Asked});
    QCOMPARE(field(1, PlaybackModel::StateRole).toInt(), int{PlaybackModel::Failed});
    m_book->timedOut(77);
    QCOMPARE(field(0, PlaybackModel::StateRole).toInt(), int{PlaybackModel::Asked});
}

void TestPlaybackModel::lostConnection()
{
    m_book->play(false, 3, "Hall", 8, "bell.wav", 4000);
    progress(1, 10);
    m_book->forget();
    QCOMPARE(field(0, PlaybackModel::StateRole).toInt(), int{PlaybackModel::Failed});
    QCOMPARE(field(0, PlaybackModel::ProblemRole).toString(),
             QString("the connection to the server was lost"));
}

void TestPlaybackModel::anotherServer()
{
    m_book->play(false, 3, "Hall", 8, "bell.wav", 4000);
    m_book->play(true, 4, "Yard", 8, "bell.wav", 4000);
    QSignalSpy counts(m_book.get(), &PlaybackModel::countChanged);
    m_book->clear();
    QCOMPARE(m_book->rowCount(), 0);
    QCOMPARE(counts.size(), 1);
}

void TestPlaybackModel::unexpectedAnswers()
{
    progress(1, 50);
    progress(0, 50);
    m_book->replyArrived("PlayAudio", "206", "x", 9, 9);
    QCOMPARE(m_book->rowCount(), 0);
    QCOMPARE(m_book->data(QModelIndex(), PlaybackModel::TitleRole), QVariant());
}

QTEST_GUILESS_MAIN(TestPlaybackModel)
#include "tst_playbackmodel.moc"
