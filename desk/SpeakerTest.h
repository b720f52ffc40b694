#pragma once

#include <QObject>

class PluginClient;
class RequestTimeouts;

/**
 * Asks a speaker whether it answers: opens a talk to it and closes it again. One at a time, not during a
 * talk. Used on the window's thread.
 */
class SpeakerTest : public QObject
{
    Q_OBJECT

public:
    /** @param watch reports which request was answered, and which has waited for too long */
    SpeakerTest(PluginClient& plugin, const RequestTimeouts& watch);

    /** Returns whether a test runs. */
    bool isRunning() const { return m_speaker != 0; }

    /** Returns the id of the speaker that is tested; 0 for none. */
    int speaker() const { return m_speaker; }

    /** Starts a test; tested follows. @param speaker not 0 */
    void start(int speaker);

    /** Ends a test without a result. Does nothing when none runs. */
    void cancel();

Q_SIGNALS:
    /** Emitted when a test starts or ends. */
    void runningChanged();
    /** Emitted when a test has ended. @param text its result, for people */
    void tested(int speaker, bool success, const QString& text);

private:
    void startTalkToIPAudioResponse(bool success, const QString& error, int speaker);
    void timedOut(quint64 request);
    int close();
    void finish(bool success, const QString& error);

    PluginClient& m_plugin;
    const RequestTimeouts& m_watch;
    int m_speaker = 0; ///< 0 for none.
    quint64 m_request = 0;
};
