#pragma once

#include <QObject>
#include <QTimer>

/**
 * What the talk key does to a talk and to the mute: a talk that the key opened lasts as long as the key is
 * down and a little longer, and a mute is lifted for as long. Used on the window's thread.
 */
class PushToTalk : public QObject
{
    Q_OBJECT

public:
    /** How long a talk lasts that the talk key opened. */
    enum class Hold
    {
        None, ///< There is none; any talk was opened by the button.
        Down, ///< As long as the key is down.
        Tail, ///< The key is up; the last sound goes out. Nothing but the key makes the talk last longer.
    };

    /** @param tail runs while the last sound goes out, and outlives the object; null for one of its own */
    explicit PushToTalk(QTimer* tail = nullptr);

    /** Returns the state of the talk that the key opened. */
    Hold hold() const { return m_hold; }

    /** Sets the state of the talk that the key opened; in Tail, tailEnded follows after 400 ms. */
    void setHold(Hold hold);

    /** Returns whether the microphone is muted at the moment. */
    bool isMuted() const { return m_muted; }

    /** Mutes or unmutes for good, whatever the key does meanwhile. */
    void setMuted(bool muted);

    /** Lifts a mute until restoreMute. */
    void liftMute();

    /** Mutes again what liftMute has lifted, if setMuted was not called since. */
    void restoreMute();

    /** Returns whether somebody hears the microphone for no longer than the key is held. */
    bool isWhileHeld() const { return m_whileHeld; }

    /** Reports whether a talk is open. */
    void setTalking(bool talking);

Q_SIGNALS:
    /** Emitted when isMuted has changed. */
    void mutedChanged(bool muted);
    /** Emitted when isWhileHeld has changed. */
    void whileHeldChanged();
    /** Emitted when the last sound has gone out: the talk ends. */
    void tailEnded();

private:
    void mute(bool muted);
    void update();

    Hold m_hold = Hold::None;
    bool m_talking = false;
    bool m_muted = false;
    bool m_lifted = false; ///< The talk key lifts a mute, until the key is up and a tail is over.
    bool m_whileHeld = false;
    QTimer m_ownTail;
    QTimer& m_tail; ///< Runs in Hold::Tail and nowhere else.
};
