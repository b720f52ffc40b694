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
    /** How far the talk is. */
    Q_PROPERTY(Phase phase READ phase NOTIFY phaseChanged)
    /** The names of those who hear the microphone, joined by commas. */
    Q_PROPERTY(QString partners READ partners NOTIFY partnersChanged)
    /** How long the talk has been open, s. */
    Q_PROPERTY(int seconds READ seconds NOTIFY secondsChanged)
    /** A held talk key lifts it for as long as it is held; set meanwhile, it stays as it was set. */
    Q_PROPERTY(bool muted READ isMuted WRITE setMuted NOTIFY mutedChanged)
    /** Whether somebody hears the microphone for no longer than the talk key is held. */
    Q_PROPERTY(bool whileHeld READ isWhileHeld NOTIFY whileHeldChanged)
    /** The volume of the microphone, 0 to 100; 50 leaves it as it is. */
    Q_PROPERTY(int volume READ volume WRITE setVolume NOTIFY volumeChanged)
    /** What went wrong with the last talk; empty when nothing did. */
    Q_PROPERTY(QString problem READ problem NOTIFY problemChanged)
    /** What can be done about the problem; empty when there is none. */
    Q_PROPERTY(QString advice READ advice NOTIFY problemChanged)
    /** The id of the speaker that is tested; 0 for none. */
    Q_PROPERTY(int testing READ testing NOTIFY testingChanged)

public:
    /** How far a talk is. */
    enum Phase
    {
        Idle,    ///< There is no talk.
        Asking,  ///< Nobody that was asked has answered yet; stop gives it up.
        Talking, ///< Somebody hears the microphone.
    };
    Q_ENUM(Phase)

    /**
     * @param watch reports which request was answered, and which has waited for too long
     * @param tail  as that of PushToTalk
     */
    TalkControl(PluginClient& plugin, TargetModel& targets, RequestTimeouts& watch, QTimer* tail = nullptr);

    /** Returns the property phase. */
    Phase phase() const { return m_phase; }
    /** Returns the property partners. */
    QString partners() const;
    /** Returns the property seconds. */
    int seconds() const { return m_phase == Talking ? static_cast<int>(m_clock.elapsed() / 1000) : 0; }
    /** Returns the property muted. */
    bool isMuted() const { return m_key.isMuted(); }
    /** Sets the property muted. */
    void setMuted(bool muted) { m_key.setMuted(muted); }
    /** Returns the property whileHeld. */
    bool isWhileHeld() const { return m_key.isWhileHeld(); }
    /** Returns the property volume. */
    int volume() const { return m_volume; }
    /** Sets the property volume. */
    void setVolume(int volume);
    /** Returns the property problem. */
    QString problem() const { return m_problem; }
    /** Returns the property advice. */
    QString advice() const { return m_advice; }
    /** Returns the property testing. */
    int testing() const { return m_test.speaker(); }

    /** Reports whether the server can be asked at all. A talk ends with the connection. */
    void setOnline(bool online);

    /**
     * Starts a talk to what is chosen, or adds chosen speakers to the one that runs. Does nothing while a
     * talk is being opened, or ends after its key was let go.
     */
    Q_INVOKABLE void start();
    /** Ends the talk, also one that is being opened; does nothing else without one. */
    Q_INVOKABLE void stop();
    /** Starts a talk, or ends the one that runs or is being opened. */
    Q_INVOKABLE void toggle();

    /** Reports that the talk key went down: talks while it is held; a mute is lifted for as long. */
    Q_INVOKABLE void press();
    /** Reports that the talk key went up: a talk that it opened ends 400 ms later, and the mute is as before.
     */
    Q_INVOKABLE void release();

    /**
     * Opens a talk to a speaker and closes it again; tested reports the result.
     *
     * @return false without a connection, and while there is a talk or a test
     */
    Q_INVOKABLE bool test(int speaker);

    /** Ends a test without a result. Does nothing when none runs. */
    Q_INVOKABLE void cancelTest() { m_test.cancel(); }

    /** Ends what runs, and clears problem and advice: another server follows. */
    void forgetServer();

    /** Clears problem and advice. */
    Q_INVOKABLE void dismissProblem() { report(QString(), QString()); }

    /** Reports that one of several targets was lost. @param fields those of a TalkTargetLost event */
    void targetLost(const QVariantMap& fields);

    /** Reports that a packet of sound went out. */
    void packetSent() { m_lastPacket.start(); }

Q_SIGNALS:
    /** Emitted when phase has changed. */
    void phaseChanged();
    /** Emitted when partners has changed. */
    void partnersChanged();
    /** Emitted when seconds has changed. */
    void secondsChanged();
    /** Emitted when muted has changed. */
    void mutedChanged();
    /** Emitted when whileHeld has changed. */
    void whileHeldChanged();
    /** Emitted when volume has changed. */
    void volumeChanged();
    /** Emitted when problem or advice has changed. */
    void problemChanged();
    /** Emitted when testing has changed. */
    void testingChanged();
    /** Emitted when a test has ended by itself. @param text its result, for people */
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
    void reportRefusedByTheLink();
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
