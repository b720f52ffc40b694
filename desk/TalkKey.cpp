#include "desk/TalkKey.h"

#include "desk/TalkControl.h"

#include <QKeyEvent>
#include <QQuickItem>
#include <QQuickWindow>

TalkKey::TalkKey(TalkControl& talk) : m_talk(talk) {}

void TalkKey::watch(QQuickWindow* window)
{
    m_window = window;
    window->installEventFilter(this);
    connect(window, &QQuickWindow::activeChanged, this, [this] {
        if (!m_window->isActive()) {
            setHeld(false);
        }
    });
}

void TalkKey::setEnabled(bool enabled)
{
    if (m_enabled == enabled) {
        return;
    }
    m_enabled = enabled;
    if (!enabled) {
        setHeld(false);
    }
    Q_EMIT enabledChanged();
}

void TalkKey::setHeld(bool held)
{
    if (m_held == held) {
        return;
    }
    m_held = held;
    if (held) {
        m_talk.press();
    } else {
        m_talk.release();
    }
    Q_EMIT heldChanged();
}

/** Whether a space is a letter for whatever has the focus. */
bool TalkKey::isTyping() const
{
    const QQuickItem* item = m_window->activeFocusItem();
    return item != nullptr && item->flags().testFlag(QQuickItem::ItemAcceptsInputMethod);
}

bool TalkKey::eventFilter(QObject* watched, QEvent* event)
{
    const bool down = event->type() == QEvent::KeyPress;
    if ((!down && event->type() != QEvent::KeyRelease) ||
        static_cast<QKeyEvent*>(event)->key() != Qt::Key_Space) {
        return QObject::eventFilter(watched, event);
    }
    const auto* key = static_cast<QKeyEvent*>(event);
    if (m_held || (m_enabled && down && key->modifiers() == Qt::NoModifier && !isTyping())) {
        if (!key->isAutoRepeat()) {
            setHeld(down);
        }
        return true;
    }
    return QObject::eventFilter(watched, event);
}
