#pragma once

#include "desk/Desk.h"
#include "desk/TalkKey.h"

#include <QQmlApplicationEngine>
#include <QTranslator>

class QQuickWindow;

/** The desk's window: QML over a Desk, in the chosen language. */
class DeskWindow : public QObject
{
    Q_OBJECT

public:
    /** Makes what the window is made of known to QML; once a process. */
    static void registerTypes();

    /** @param desk loaded; outlives the window */
    explicit DeskWindow(Desk& desk);

    /** Shows the window; false when its description is broken. */
    bool show();

    /** Null before show. */
    QQuickWindow* window() const;

private:
    void translate();

    Desk& m_desk;
    TalkKey m_talkKey;
    QTranslator m_translator;
    QQmlApplicationEngine m_engine;
};
