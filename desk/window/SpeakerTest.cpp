#include "SpeakerTest.h"

#include <QMetaObject>

SpeakerTest::SpeakerTest(QObject* plugin, int answerTimeout) : m_plugin(plugin)
{
    m_answerTimer.setSingleShot(true);
    m_answerTimer.setInterval(answerTimeout);
    connect(&m_answerTimer, &QTimer::timeout, this, [this] { finish(false, tr("no answer")); });
    connect(m_plugin, SIGNAL(startTalkToIPAudioResponse(bool, QString, int)), this,
            SLOT(startTalkToIPAudioResponse(bool, QString, int)));
}

void SpeakerTest::start(int speaker)
{
    m_speaker = speaker;
    m_answerTimer.start();
    bool accepted = false;
    QMetaObject::invokeMethod(m_plugin, "startTalkToIPAudio", Q_RETURN_ARG(bool, accepted),
                              Q_ARG(int, speaker));
    if (!accepted && isRunning()) {
        finish(false, tr("the server cannot be asked"));
    }
}

void SpeakerTest::startTalkToIPAudioResponse(bool success, const QString& error, int speaker)
{
    if (isRunning() && speaker == m_speaker) {
        finish(success, error);
    }
}

void SpeakerTest::finish(bool success, const QString& error)
{
    m_answerTimer.stop();
    QMetaObject::invokeMethod(m_plugin, "stopTalk");
    QMetaObject::invokeMethod(m_plugin, "stopAudioCapture");
    const int speaker = m_speaker;
    m_speaker = 0;
    Q_EMIT tested(speaker, success,
                  success ? tr("The speaker answers.") : tr("The speaker does not answer: %1").arg(error));
}
