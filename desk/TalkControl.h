#pragma once

#include "desk/PushToTalk.h"
#include "desk/SpeakerTest.h"
#include "desk/TargetModel.h"

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>
#include <QVariantMap>

#include <vector>

class RequestTimeouts;
class PluginClient;

/**
 * A talk as an operator has it: to what is chosen, by a button or a held key, with words for all that goes
 * wrong.
 *
 *   Idle -- start --> Asking -- first answer "yes" --> Talking -- stop, loss --> Idle
 */
class TalkControl : public QObject
{
    Q_OBJECT
    Q_PROPERTY(Phase phase READ phase NOTIFY phaseChanged)
    /** Who hears, by name. */
    Q_PROPERTY(QString partners READ partners NOTIFY partnersChanged)
    /** How long the talk has been open, s. */
    Q_PROPERTY(int seconds READ seconds NOTIFY secondsChanged)
    /** A held talk key lifts it for as long as it is held; set meanwhile, it stays as it was set. */
    Q_PROPERTY(bool muted READ isMuted WRITE setMuted NOTIFY mutedChanged)
    /** Whether somebody hears the microphone for no longer than the talk key is held. */
    Q_PROPERTY(bool whileHeld READ isWhileHeld NOTIFY whileHeldChanged)
    /** Of the microphone, 0 to 100; 50 leaves it as it is. */
    Q_PROPERTY(int volume READ volume WRITE setVolume NOTIFY volumeChanged)
    /** What went wrong with the last talk, and what can be done; empty when nothing did. */
    Q_PROPERTY(QString problem READ problem NOTIFY problemChanged)
    Q_PROPERTY(QString advice READ advice NOTIFY problemChanged)
    /** The id of the speaker that is tested; 0 for none. */
    Q_PROPERTY(int testing READ testing NOTIFY testingChanged)

public:
    enum Phase
    {
        Idle,
        Asking,
        Talking,
    };
    Q_ENUM(Phase)

    /** @param watch reports which request was answered, and which has waited for too long */
    TalkControl(PluginClient& plugin, TargetModel& targets, RequestTimeouts& watch);

    Phase phase() const { return m_phase; }
    QString partners() const;
    int seconds() const { return m_phase == Talking ? static_cast<int>(m_clock.elapsed() / 1000) : 0; }
    bool isMuted() const { return m_key.isMuted(); }
    void setMuted(bool muted) { m_key.setMuted(muted); }
    bool isWhileHeld() const { return m_key.isWhileHeld(); }
    int volume() const { return m_volume; }
    void setVolume(int volume);
    QString problem() const { return m_problem; }
    QString advice() const { return m_advice; }
    int testing() const { return m_test.speaker(); }

    /** Whether the server can be asked at all; false makes start tell so. */
    void setOnline(bool online);

    /**
     * Starts a talk to what is chosen, or adds chosen speakers to the one that runs. Does nothing while a
     * talk is being opened, or ends after its key was let go.
     */
    Q_INVOKABLE void start();
    Q_INVOKABLE void stop();
    Q_INVOKABLE void toggle();

    /** The talk key goes down: talks while it is held; a mute is lifted for as long. */
    Q_INVOKABLE void press();
    Q_INVOKABLE void release();

    /** Opens a talk to a speaker and closes it again; tested tells how it went. Not while talking. */
    Q_INVOKABLE bool test(int speaker);

    /** Ends a test without a result. Does nothing when none runs. */
    Q_INVOKABLE void cancelTest() { m_test.cancel(); }

    /** Another server follows: ends what runs, and takes back what was said of the last server. */
    void forgetServer();

    Q_INVOKABLE void dismissProblem() { report(QString(), QString()); }

    /** One of several targets was lost. @param fields those of a TalkTargetLost event */
    void targetLost(const QVariantMap& fields);

    /** A packet of sound went out. */
    void packetSent() { m_lastPacket.start(); }

Q_SIGNALS:
    void phaseChanged();
    void partnersChanged();
    void secondsChanged();
    void mutedChanged();
    void whileHeldChanged();
    void volumeChanged();
    void problemChanged();
    void testingChanged();
    void tested(int speaker, bool success, const QString& text);

private:
    void startTalkResponse(bool success);
    void startTalkToIPAudioResponse(bool success, const QString& error, int speaker);
    void talkDisconnected();
    void talkingChanged();
    void microphoneChanged();

    using Hold = PushToTalk::Hold;

    /** A target that was asked, and has not answered yet. */
    struct Asked
    {
        QString key;
        quint64 request;
    };
    using AskedTargets = std::vector<Asked>;

    void setPhase(Phase phase);
    AskedTargets::iterator findAsked(const QString& key);
    void report(const QString& problem, const QString& advice);
    void askCamera(const TargetModel::Target& camera);
    void askSpeakers();
    void answered(const QString& key, bool success);
    void keepCapturing();
    void timedOut(quint64 request);
    void tick();
    void endForgottenTalk();
    QString refusalOf(const QString& name) const;

    PluginClient& m_plugin;
    TargetModel& m_targets;
    RequestTimeouts& m_watch;
    Phase m_phase = Idle;
    bool m_online = false;
    int m_volume = 50;
    QString m_problem;
    QString m_advice;
    AskedTargets m_asked;
    QStringList m_partners; ///< Keys of open targets.
    QStringList m_lost;     ///< Keys of targets that the plug-in has open and the server has lost.
    PushToTalk m_key;
    SpeakerTest m_test;
    QElapsedTimer m_clock;
    QElapsedTimer m_lastPacket;
    QTimer m_ticker; ///< While talking.
};
