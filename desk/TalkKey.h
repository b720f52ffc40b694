#pragma once

#include <QObject>

class QQuickWindow;
class TalkControl;

/**
 * The space bar as a talk key: while it is held, on pages that want it and outside of text fields. Letting
 * the window go lets the key go.
 */
class TalkKey : public QObject
{
    Q_OBJECT
    Q_PROPERTY(bool enabled READ isEnabled WRITE setEnabled NOTIFY enabledChanged)
    Q_PROPERTY(bool held READ isHeld NOTIFY heldChanged)

public:
    explicit TalkKey(TalkControl& talk);

    void watch(QQuickWindow* window);

    bool isEnabled() const { return m_enabled; }
    void setEnabled(bool enabled);
    bool isHeld() const { return m_held; }

Q_SIGNALS:
    void enabledChanged();
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
