#pragma once

#include <QObject>

class QQuickWindow;
class TalkControl;

/**
 * The space bar as a talk key: while it is held, on pages that want it and outside text fields. Letting
 * the window go lets the key go.
 */
class TalkKey : public QObject
{
    Q_OBJECT
    /** Whether the space bar is the talk key; otherwise it does what it does elsewhere. */
    Q_PROPERTY(bool enabled READ isEnabled WRITE setEnabled NOTIFY enabledChanged)
    /** Whether the talk key is down. */
    Q_PROPERTY(bool held READ isHeld NOTIFY heldChanged)

public:
    /** @param talk outlives the object */
    explicit TalkKey(TalkControl& talk);

    /** Takes the keys of a window. Called once. @param window outlives the object */
    void watch(QQuickWindow* window);

    /** Returns the property enabled. */
    bool isEnabled() const { return m_enabled; }
    /** Sets the property enabled. */
    void setEnabled(bool enabled);
    /** Returns the property held. */
    bool isHeld() const { return m_held; }

Q_SIGNALS:
    /** Emitted when enabled has changed. */
    void enabledChanged();
    /** Emitted when held has changed. */
    void heldChanged();

private:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void setHeld(bool held);
    bool isTyping() const;

    TalkControl& m_talk;
    QQuickWindow* m_window = nullptr;
    bool m_enabled = false;
    bool m_held = false;
};
