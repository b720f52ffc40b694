#include "desk/SpeakerTest.h"

#include "client/PluginClient.h"

#include <utility>

SpeakerTest::SpeakerTest(PluginClient& plugin, int answerTimeout) : m_plugin(plugin)
{
    m_answerTimer.setSingleShot(true);
    m_answerTimer.setInterval(answerTimeout);
    connect(&m_answerTimer, &QTimer::timeout, this, [this] { finish(false, tr("no answer")); });
    connect(&m_plugin, &PluginClient::startTalkToIPAudioResponse, this,
            &SpeakerTest::startTalkToIPAudioResponse);
}

void SpeakerTest::start(int speaker)
{
    m_speaker = speaker;
    m_answerTimer.start();
    if (!m_plugin.startTalkToIPAudio(speaker) && isRunning()) {
        finish(false, tr("the server cannot be asked"));
    }
}

void SpeakerTest::startTalkToIPAudioResponse(bool success, const QString& error, int speaker)
{
    if (isRunning() && speaker == m_speaker) {
        finish(success, error);
    }
}

void SpeakerTest::cancel()
{
    if (isRunning()) {
        close();
    }
}

/** Closes what a test has opened. @return the speaker */
int SpeakerTest::close()
{
    m_answerTimer.stop();
    m_plugin.stopTalk();
    m_plugin.stopAudioCapture();
    return std::exchange(m_speaker, 0);
}

void SpeakerTest::finish(bool success, const QString& error)
{
    const int speaker = close();
    Q_EMIT tested(speaker, success,
                  success ? tr("The speaker answers.") : tr("The speaker does not answer: %1").arg(error));
}
