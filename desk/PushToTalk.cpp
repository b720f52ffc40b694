#include "desk/PushToTalk.h"

namespace {

constexpr int releaseTail = 400; // ms

} // namespace

PushToTalk::PushToTalk(QTimer* tail) : m_tail(tail != nullptr ? *tail : m_ownTail)
{
    m_tail.setSingleShot(true);
    m_tail.setInterval(releaseTail);
    connect(&m_tail, &QTimer::timeout, this, &PushToTalk::tailEnded);
}

void PushToTalk::setHold(Hold hold)
{
    m_hold = hold;
    if (hold == Hold::Tail) {
        m_tail.start();
    } else {
        m_tail.stop();
    }
    update();
}

void PushToTalk::setMuted(bool muted)
{
    m_lifted = false;
    mute(muted);
    update();
}

void PushToTalk::mute(bool muted)
{
    if (m_muted == muted) {
        return;
    }
    m_muted = muted;
    Q_EMIT mutedChanged(muted);
    update();
}

void PushToTalk::liftMute()
{
    if (m_muted) {
        m_lifted = true;
        mute(false);
    }
}

void PushToTalk::restoreMute()
{
    if (m_lifted) {
        m_lifted = false;
        mute(true);
    }
}

void PushToTalk::setTalking(bool talking)
{
    m_talking = talking;
    update();
}

void PushToTalk::update()
{
    const bool whileHeld = m_talking && !m_muted && (m_hold != Hold::None || m_lifted);
    if (m_whileHeld != whileHeld) {
        m_whileHeld = whileHeld;
        Q_EMIT whileHeldChanged();
    }
}
