#pragma once

#include "desk/SpeakerTest.h"
#include "desk/TargetModel.h"

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>
#include <QVariantMap>

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

public:
    enum Phase
    {
        Idle,
        Asking,
        Talking,
    };
    Q_ENUM(Phase)

    /** @param answerTimeout ms */
    TalkControl(PluginClient& plugin, TargetModel& targets, RequestTimeouts& watch, int answerTimeout = 5000);

    Phase phase() const { return m_phase; }
    QString partners() const;
    int seconds() const { return m_phase == Talking ? static_cast<int>(m_clock.elapsed() / 1000) : 0; }
    bool isMuted() const { return m_muted; }
    void setMuted(bool muted);
    bool isWhileHeld() const { return m_whileHeld; }
    int volume() const { return m_volume; }
    void setVolume(int volume);
    QString problem() const { return m_problem; }
    QString advice() const { return m_advice; }

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
    void tested(int speaker, bool success, const QString& text);

private:
    void startTalkResponse(bool success);
    void startTalkToIPAudioResponse(bool success, const QString& error, int speaker);
    void talkDisconnected();
    void talkingChanged();
    void microphoneChanged();

    /** How long a talk lasts that the talk key opened. */
    enum class Hold
    {
        None, ///< There is none; any talk was opened by the button.
        Down, ///< As long as the key is down.
        Tail, ///< The key is up; the last sound goes out. Nothing but the key makes the talk last longer.
    };

    void setPhase(Phase phase);
    void setHold(Hold hold);
    void mute(bool muted);
    void liftMute();
    void restoreMute();
    void updateWhileHeld();
    void report(const QString& problem, const QString& advice);
    void askCamera(const TargetModel::Target& camera);
    void askSpeakers();
    void answered(const QString& key, bool success);
    void keepCapturing();
    void timeOut();
    void tick();
    void endForgottenTalk();
    QString refusalOf(const QString& name) const;

    PluginClient& m_plugin;
    TargetModel& m_targets;
    RequestTimeouts& m_watch;
    Phase m_phase = Idle;
    bool m_online = false;
    bool m_muted = false;
    int m_volume = 50;
    QString m_problem;
    QString m_advice;
    QStringList m_asked;         ///< Keys without an answer yet.
    QStringList m_partners;      ///< Keys of open targets.
    QStringList m_lost;          ///< Keys of targets that the plug-in has open and the server has lost.
    quint64 m_cameraRequest = 0; ///< Of the last camera that was asked.
    Hold m_hold = Hold::None;
    bool m_lifted = false; ///< The talk key lifts a mute, until the key is up and a tail is over.
    bool m_whileHeld = false;
    SpeakerTest m_test;
    QElapsedTimer m_clock;
    QElapsedTimer m_lastPacket;
    QTimer m_answerTimer;
    QTimer m_ticker; ///< While talking.
    QTimer m_tail;   ///< Runs in Hold::Tail and nowhere else.
};
