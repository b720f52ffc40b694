#pragma once

#include "tests/desk/WindowFixture.h"

#include <memory>

/** The base of tests of the window as an operator uses it: with a sound server, and without a complaint of
 * QML.
 */
class WindowTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanup();

protected:
    /** Adds a speaker through its dialog. */
    static void addSpeaker(WindowFixture& desk, const QString& name, const QString& address);
    /** Drops a sound file on its page. */
    static void sendFile(WindowFixture& desk);

    std::unique_ptr<PulseServer> m_pulse;
};
