#pragma once

#include <QObject>
#include <QTimer>

class PluginClient;

/** Asks a speaker whether it answers: opens a talk to it and closes it again. One at a time, not during a
 * talk. */
class SpeakerTest : public QObject
{
    Q_OBJECT

public:
    /** @param answerTimeout ms */
    SpeakerTest(PluginClient& plugin, int answerTimeout);

    bool isRunning() const { return m_speaker != 0; }

    /** Starts a test; tested follows. @param speaker not 0 */
    void start(int speaker);
    /** Ends a test without a word. */
    void cancel();

Q_SIGNALS:
    /** @param text how it went, for people */
    void tested(int speaker, bool success, const QString& text);

private:
    void startTalkToIPAudioResponse(bool success, const QString& error, int speaker);
    int close();
    void finish(bool success, const QString& error);

    PluginClient& m_plugin;
    int m_speaker = 0; ///< 0 for none.
    QTimer m_answerTimer;
};
