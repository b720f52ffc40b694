#include "desk/SpeakerTest.h"

#include "client/PluginClient.h"
#include "desk/ErrorMessages.h"
#include "desk/RequestTimeouts.h"

#include <utility>

SpeakerTest::SpeakerTest(PluginClient& plugin, const RequestTimeouts& watch)
    : m_plugin(plugin), m_watch(watch)
{
    connect(&m_watch, &RequestTimeouts::timedOut, this, &SpeakerTest::timedOut);
    connect(&m_plugin, &PluginClient::startTalkToIPAudioResponse, this,
            &SpeakerTest::startTalkToIPAudioResponse);
}

void SpeakerTest::start(int speaker)
{
    m_speaker = speaker;
    Q_EMIT runningChanged();
    if (m_plugin.startTalkToIPAudio(speaker)) {
        m_request = m_watch.lastSent();
    } else if (isRunning()) {
        finish(false, tr("the server cannot be asked"));
    }
}

void SpeakerTest::startTalkToIPAudioResponse(bool success, const QString& error, int speaker)
{
    // A success counts whatever request it answers: the speaker is open.
    if (isRunning() && speaker == m_speaker && (success || m_watch.lastAnswered() == m_request)) {
        finish(success, error);
    }
}

void SpeakerTest::timedOut(quint64 request)
{
    if (isRunning() && request == m_request) {
        finish(false, tr("no answer"));
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
    m_plugin.stopTalk();
    m_plugin.stopAudioCapture();
    const int speaker = std::exchange(m_speaker, 0);
    Q_EMIT runningChanged();
    return speaker;
}

void SpeakerTest::finish(bool success, const QString& error)
{
    const int speaker = close();
    Q_EMIT tested(speaker, success,
                  success ? tr("The speaker answers.")
                          : tr("The speaker does not answer: %1").arg(ErrorMessages::shortened(error)));
}
