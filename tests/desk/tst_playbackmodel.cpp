// Playbacks as the desk keeps them, over a stand-in for the plug-in's signals and invokables.

#include "client/PluginClient.h"
#include "desk/PlaybackModel.h"
#include "desk/RequestTimeouts.h"

#include <QAbstractItemModelTester>
#include <QElapsedTimer>
#include <QSignalSpy>
#include <QTest>

/** What of the plug-in playback needs. */
class FakePlayer : public QObject
{
    Q_OBJECT

public:
    Q_INVOKABLE void playAudio(int device, int file)
    {
        send("PlayAudio");
        calls.append(QString("play %1 %2").arg(device).arg(file));
    }
    Q_INVOKABLE void playGroupAudio(int group, int file)
    {
        send("PlayGroupAudio");
        calls.append(QString("playGroup %1 %2").arg(group).arg(file));
    }
    Q_INVOKABLE void stopCurrentAudio(int device)
    {
        send("StopCurrentAudio");
        calls.append(QString("stop %1").arg(device));
    }
    Q_INVOKABLE void stopCurrentGroupAudio(int group)
    {
        send("StopCurrentGroupAudio");
        calls.append(QString("stopGroup %1").arg(group));
    }

    QStringList calls;
    RequestTimeouts watch;
    quint64 request = 0; ///< The last one.
    bool sends = true;   ///< Otherwise there is nothing to send with.
    bool accepts = true; ///< Whether the link takes what is sent.

Q_SIGNALS:
    void playAudioError(const QString& ipAudioName, const QString& audioFileName, const QString& errorCode,
                        const QString& alarmName);

private:
    void send(const QString& command)
    {
        if (sends) {
            watch.commandSent(command, QVariant(), accepts, ++request);
        }
    }
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
    void silentServer();
    void lastReplies();
    void refusedByTheLink();
    void aNewFileTakesThePlace();
    void errorsOutsideOfReplies();
    void stopByAnotherAfterAFailedOne();
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

    PlaybackModel::State state(int row) const
    {
        return static_cast<PlaybackModel::State>(field(row, PlaybackModel::StateRole).toInt());
    }

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
    QSignalSpy failed(m_book.get(), &PlaybackModel::failed);
    m_book->play(true, 5, "Yard", 8, "bell.wav", 4000);
    QCOMPARE(m_player->calls.last(), QString("playGroup 5 8"));
    progress(1, 20);
    m_book->stop(0);
    QCOMPARE(m_player->calls.last(), QString("stopGroup 5"));
    QCOMPARE(m_book->rowCount(), 1); // the server has not said yet that it stops
    m_book->replyArrived("StopCurrentGroupAudio", "403", "none", 2, 5);
    QCOMPARE(state(0), PlaybackModel::Playing);
    QCOMPARE(failed.last()[0].toString(),
             QString("\"bell.wav\" was not stopped on Yard: the group is not there any more"));
    m_book->stop(0);
    m_book->replyArrived("StopCurrentGroupAudio", "0", QString(), 3, QVariant());
    QCOMPARE(m_book->rowCount(), 0);
    m_book->replyArrived("PlayGroupAudio", "423", "stopped", 1, 5);

    m_book->play(false, 5, "Hall", 8, "bell.wav", 4000);
    m_book->stop(0);
    QCOMPARE(m_player->calls.last(), QString("stop 5"));
    m_book->replyArrived("PlayAudio", "423", "stopped", 4, 5); // before the reply to the stop
    QCOMPARE(m_book->rowCount(), 0);
    m_book->stop(0); // rows that are not there
    m_book->dismiss(-1);
    m_book->dismiss(7);
    QCOMPARE(m_player->calls.size(), 5);
    QCOMPARE(failed.size(), 1);
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

/** A file that has played for its length has not ended before the server says so. */
void TestPlaybackModel::silentServer()
{
    PlaybackModel model(*m_plugin, m_player->watch, 200);
    const auto stateOf = [&](int row) { return model.index(row).data(PlaybackModel::StateRole).toInt(); };
    model.play(false, 3, "Hall", 8, "bell.wav", 100);
    model.play(false, 4, "Roof", 8, "bell.wav", 0); // its length is not known
    model.replyArrived("PlayAudio", "0", QString(), 2, QVariantMap{{"progress", 99}});
    model.replyArrived("PlayAudio", "0", QString(), 1, QVariantMap{{"progress", 90}});
    QElapsedTimer since;
    since.start();
    QTRY_COMPARE(stateOf(0), int{PlaybackModel::Unanswered});
    QVERIFY(since.elapsed() >= 300);
    QCOMPARE(model.index(0).data(PlaybackModel::ProgressRole).toReal(), 0.9);
    QCOMPARE(model.index(0).data(PlaybackModel::ProblemRole).toString(),
             QString("no answer from the server"));
    QCOMPARE(stateOf(1), int{PlaybackModel::Playing});
    // It was slow and nothing else.
    model.replyArrived("PlayAudio", "0", QString(), 1, QVariantMap{{"progress", 95}});
    QCOMPARE(stateOf(0), int{PlaybackModel::Playing});
    QCOMPARE(model.index(0).data(PlaybackModel::ProblemRole).toString(), QString());
    model.replyArrived("PlayAudio", "0", QString(), 1, QVariantMap{{"progress", 100}});
    QCOMPARE(stateOf(0), int{PlaybackModel::Ended});
}

/** However a playback ends, the last reply to its request says it. */
void TestPlaybackModel::lastReplies()
{
    for (int id = 1; id <= 4; ++id) {
        m_book->play(false, id, QString("Speaker %1").arg(id), 8, "bell.wav", 4000);
        progress(static_cast<quint64>(id), 10);
    }
    m_book->replyArrived("PlayAudio", "423", "stopped", 1, 1); // by another client
    QCOMPARE(state(0), PlaybackModel::Stopped);
    QCOMPARE(field(0, PlaybackModel::ProblemRole).toString(), QString("the playback was stopped"));
    m_book->replyArrived("PlayAudio", "424", "taken", 2, 2);
    QCOMPARE(state(1), PlaybackModel::Stopped);
    QCOMPARE(field(1, PlaybackModel::ProblemRole).toString(),
             QString("another playback has taken the speaker"));
    m_book->replyArrived("PlayAudio", "206", "gone", 3, 3);
    QCOMPARE(state(2), PlaybackModel::Failed);
    m_book->replyArrived("PlayAudio", "422", "broken", 4, 4);
    QCOMPARE(state(3), PlaybackModel::Failed);
    QCOMPARE(field(3, PlaybackModel::ProblemRole).toString(), QString("the audio file cannot be played"));
    progress(1, 50); // after the last reply
    QCOMPARE(state(0), PlaybackModel::Stopped);
}

void TestPlaybackModel::aNewFileTakesThePlace()
{
    m_book->play(false, 3, "Hall", 8, "bell.wav", 4000);
    progress(1, 30);
    m_book->play(false, 3, "Hall", 9, "gong.wav", 4000);
    QCOMPARE(m_book->rowCount(), 2); // the server may refuse the new one, and the old one plays on
    m_book->replyArrived("PlayAudio", "402", "no file", 2, 3);
    QCOMPARE(state(0), PlaybackModel::Playing);
    QCOMPARE(state(1), PlaybackModel::Failed);
    m_book->play(false, 3, "Hall", 10, "horn.wav", 4000);
    QCOMPARE(m_book->rowCount(), 2); // what has failed makes room
    m_book->replyArrived("PlayAudio", "424", "taken", 1, 3);
    QCOMPARE(m_book->rowCount(), 1);
    QCOMPARE(field(0, PlaybackModel::TitleRole).toString(), QString("horn.wav"));
}

void TestPlaybackModel::errorsOutsideOfReplies()
{
    QSignalSpy failed(m_book.get(), &PlaybackModel::failed);
    m_book->play(true, 3, "Hall", 8, "bell.wav", 4000);
    progress(1, 10);
    Q_EMIT m_player->playAudioError("Hall", "bell.wav", "no route", QString());
    QCOMPARE(state(0), PlaybackModel::Playing); // a speaker that has the name of the group
    QCOMPARE(failed.last()[0].toString(), QString("\"bell.wav\" was not played on Hall: no route"));
    Q_EMIT m_player->playAudioError("Roof", "bell.wav", "no route", "Opening");
    QCOMPARE(failed.last()[0].toString(),
             QString("Schedule \"Opening\": \"bell.wav\" was not played on Roof: no route"));
}

void TestPlaybackModel::stopByAnotherAfterAFailedOne()
{
    m_book->play(false, 3, "Hall", 8, "bell.wav", 4000);
    progress(1, 10);
    m_book->stop(0);
    m_book->replyArrived("StopCurrentAudio", "206", "no route", 2, 3);
    QCOMPARE(state(0), PlaybackModel::Playing);
    m_book->replyArrived("PlayAudio", "423", "stopped", 1, 3);
    QCOMPARE(m_book->rowCount(), 1); // the user has not stopped it
    QCOMPARE(state(0), PlaybackModel::Stopped);
}

void TestPlaybackModel::noAnswer()
{
    m_book->play(false, 3, "Hall", 8, "bell.wav", 4000);
    m_book->play(true, 4, "Yard", 8, "bell.wav", 4000);
    m_book->play(false, 5, "Roof", 8, "bell.wav", 4000);
    m_book->timedOut(2);
    QCOMPARE(state(0), PlaybackModel::Asked);
    QCOMPARE(state(1), PlaybackModel::Unanswered);
    QCOMPARE(field(1, PlaybackModel::ProblemRole).toString(), QString("no answer from the server"));
    m_book->timedOut(77);
    QCOMPARE(state(0), PlaybackModel::Asked);
    progress(1, 10);
    m_book->timedOut(1);
    QCOMPARE(state(0), PlaybackModel::Playing); // it was answered
    // It plays after all, and another does not.
    progress(2, 0);
    QCOMPARE(state(1), PlaybackModel::Playing);
    m_book->timedOut(3);
    m_book->replyArrived("PlayAudio", "206", "gone", 3, 5);
    QCOMPARE(state(2), PlaybackModel::Failed);
    QCOMPARE(field(2, PlaybackModel::ProblemRole).toString(), QString("the speaker is offline"));
}

void TestPlaybackModel::refusedByTheLink()
{
    QSignalSpy failed(m_book.get(), &PlaybackModel::failed);
    m_book->play(false, 3, "Hall", 8, "bell.wav", 4000);
    m_player->accepts = false;
    m_book->play(false, 4, "Roof", 8, "bell.wav", 4000);
    QCOMPARE(state(1), PlaybackModel::Failed);
    QCOMPARE(field(1, PlaybackModel::ProblemRole).toString(), QString("the server cannot be asked"));
    m_book->stop(0);
    QCOMPARE(m_book->rowCount(), 2);
    QCOMPARE(failed.last()[0].toString(),
             QString("\"bell.wav\" was not stopped on Hall: the server cannot be asked"));
    m_player->sends = false;
    m_player->accepts = true;
    m_book->play(true, 4, "Yard", 8, "bell.wav", 4000);
    QCOMPARE(state(2), PlaybackModel::Failed);
    progress(1, 50); // of the one that was sent
    QCOMPARE(state(0), PlaybackModel::Playing);
    QCOMPARE(state(2), PlaybackModel::Failed);
}

void TestPlaybackModel::lostConnection()
{
    m_book->play(false, 3, "Hall", 8, "bell.wav", 4000);
    progress(1, 10);
    m_book->forget();
    QCOMPARE(field(0, PlaybackModel::StateRole).toInt(), int{PlaybackModel::Failed});
    QCOMPARE(field(0, PlaybackModel::ProblemRole).toString(),
             QString("the connection to the server was lost"));
    m_book->play(false, 4, "Roof", 8, "bell.wav", 4000);
    m_book->timedOut(2);
    m_book->play(false, 5, "Yard", 8, "bell.wav", 4000);
    progress(3, 100);
    m_book->forget();
    QCOMPARE(state(1), PlaybackModel::Failed); // its answer can come no more
    QCOMPARE(state(2), PlaybackModel::Ended);
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
    m_book->play(false, 3, "Hall", 8, "bell.wav", 4000);
    m_book->replyArrived("StopCurrentAudio", "0", QString(), 0, QVariant()); // a row without a stop has 0
    QCOMPARE(m_book->rowCount(), 1);
    QCOMPARE(state(0), PlaybackModel::Asked);
}

QTEST_GUILESS_MAIN(TestPlaybackModel)
#include "tst_playbackmodel.moc"
