#include "desk/TalkControl.h"

#include "client/PluginClient.h"
#include "desk/ErrorMessages.h"
#include "desk/RequestTimeouts.h"
#include "protocol/ReturnCode.h"
#include "protocol/Words.h"

#include <algorithm>

namespace {

constexpr int tickInterval = 500;       // ms
constexpr int microphoneSilence = 3000; // ms

const QString speakerPrefix = QStringLiteral("speaker:");

QString speakerKey(int id)
{
    return speakerPrefix + QString::number(id);
}

} // namespace

TalkControl::TalkControl(PluginClient& plugin, TargetModel& targets, RequestTimeouts& watch, QTimer* tail)
    : m_plugin(plugin), m_targets(targets), m_watch(watch), m_key(tail), m_test(plugin, watch)
{
    connect(&m_test, &SpeakerTest::tested, this, [this](int speaker, bool success, const QString& text) {
        m_targets.setState(speakerKey(speaker), success ? TargetModel::Ready : TargetModel::Failed);
        Q_EMIT tested(speaker, success, text);
    });
    connect(&m_test, &SpeakerTest::runningChanged, this, &TalkControl::testingChanged);
    connect(&m_watch, &RequestTimeouts::timedOut, this, &TalkControl::timedOut);
    m_ticker.setInterval(tickInterval);
    connect(&m_ticker, &QTimer::timeout, this, &TalkControl::tick);
    connect(&m_key, &PushToTalk::tailEnded, this, &TalkControl::stop);
    connect(&m_key, &PushToTalk::whileHeldChanged, this, &TalkControl::whileHeldChanged);
    connect(&m_key, &PushToTalk::mutedChanged, this, [this](bool muted) {
        m_plugin.setMicMute(muted);
        Q_EMIT mutedChanged();
    });
    connect(&m_plugin, &PluginClient::startTalkResponse, this, &TalkControl::startTalkResponse);
    connect(&m_plugin, &PluginClient::startTalkToIPAudioResponse, this,
            &TalkControl::startTalkToIPAudioResponse);
    connect(&m_plugin, &PluginClient::talkDisconnected, this, &TalkControl::talkDisconnected);
    connect(&m_plugin, &PluginClient::talkingChanged, this, &TalkControl::talkingChanged);
    connect(&m_plugin, &PluginClient::audioInDevAvailableChanged, this, &TalkControl::microphoneChanged);
}

QString TalkControl::partners() const
{
    QStringList names;
    for (const QString& key : m_partners) {
        const TargetModel::Target* target = m_targets.find(key);
        names.append(target != nullptr ? target->name : key.section(QLatin1Char(':'), 1));
    }
    return names.join(QStringLiteral(", "));
}

void TalkControl::setPhase(Phase phase)
{
    if (m_phase == phase) {
        return;
    }
    m_phase = phase;
    if (phase == Talking) {
        m_clock.start();
        m_lastPacket.start();
        m_ticker.start();
    } else {
        m_ticker.stop();
    }
    if (phase == Idle) {
        m_lost.clear();
        m_key.setHold(Hold::None);
        m_key.restoreMute();
    }
    Q_EMIT phaseChanged();
    Q_EMIT secondsChanged();
    m_key.setTalking(phase == Talking);
}

void TalkControl::report(const QString& problem, const QString& advice)
{
    if (m_problem == problem && m_advice == advice) {
        return;
    }
    m_problem = problem;
    m_advice = advice;
    Q_EMIT problemChanged();
}

void TalkControl::setOnline(bool online)
{
    const QString lost = tr("The connection to the server was lost; the talk has ended.");
    if (m_online && !online && m_phase != Idle) {
        stop();
        report(lost, tr("It is being made again. Then press Talk again."));
    } else if (m_online && !online) {
        report(QString(), QString()); // of an earlier attempt
    } else if (!m_online && online && m_problem == lost) {
        report(lost, tr("It is there again: press Talk."));
    } else if (!m_online && online) {
        report(QString(), QString()); // that there is none
    }
    m_online = online;
}

void TalkControl::setVolume(int volume)
{
    volume = qBound(0, volume, 100);
    if (m_volume == volume) {
        return;
    }
    m_volume = volume;
    m_plugin.setMicVolume(volume);
    Q_EMIT volumeChanged();
}

void TalkControl::start()
{
    if (m_phase == Asking || m_key.hold() == Hold::Tail) {
        return;
    }
    if (m_test.isRunning()) {
        report(tr("A speaker is being tested."), tr("Press Talk again when the test is over."));
        return;
    }
    report(QString(), QString());
    if (!m_online) {
        report(tr("There is no connection to the server."),
               tr("See the connection page; then press Talk again."));
        return;
    }
    const auto chosen = m_targets.chosen();
    if (chosen.empty()) {
        report(tr("Nobody is chosen."), tr("Choose a camera or speakers in the list, then press Talk."));
        return;
    }
    if (m_phase == Idle && chosen.front().camera) {
        askCamera(chosen.front());
    } else {
        askSpeakers();
    }
}

void TalkControl::askCamera(const TargetModel::Target& camera)
{
    setPhase(Asking);
    m_targets.setState(camera.key(), TargetModel::Asked);
    const quint64 before = m_watch.lastSent();
    const bool accepted = m_plugin.startTalk(camera.id);
    m_asked = {{camera.key(), m_watch.lastSent()}};
    if (!accepted && m_watch.lastSent() != before && !m_watch.lastAccepted()) {
        stop();
        reportRefusedByTheLink();
    } else if (!accepted) {
        stop();
        report(tr("The microphone cannot be opened."),
               tr("Plug a microphone in, or allow this program to use it; then press Talk again."));
    }
}

void TalkControl::reportRefusedByTheLink()
{
    report(tr("The server cannot be asked."), tr("See the connection page; then press Talk again."));
}

void TalkControl::askSpeakers()
{
    QStringList keys;
    for (const TargetModel::Target& target : m_targets.chosen()) {
        if (!target.camera && m_lost.contains(target.key())) {
            // The plug-in holds it for open until the talk ends.
            report(tr("%1 was lost.").arg(target.name),
                   tr("To talk to it again, end the talk and press Talk again."));
            continue;
        }
        if (!target.camera && !m_partners.contains(target.key()) &&
            findAsked(target.key()) == m_asked.end()) {
            keys.append(target.key());
        }
    }
    if (keys.isEmpty()) {
        return;
    }
    if (m_phase == Idle) {
        // Before anything is asked: without a microphone there is nothing to be said.
        if (!m_plugin.startAudioCapture()) {
            report(tr("The microphone cannot be opened."),
                   tr("Plug a microphone in, or allow this program to use it; then press Talk again."));
            return;
        }
        setPhase(Asking);
    }
    QStringList unasked;
    for (const QString& key : qAsConst(keys)) {
        m_targets.setState(key, TargetModel::Asked);
        if (m_plugin.startTalkToIPAudio(key.mid(speakerPrefix.size()).toInt())) {
            m_asked.push_back({key, m_watch.lastSent()});
        } else {
            unasked.append(key);
        }
    }
    for (const QString& key : qAsConst(unasked)) {
        answered(key, false);
        reportRefusedByTheLink();
    }
}

TalkControl::AskedTargets::iterator TalkControl::findAsked(const QString& key)
{
    return std::find_if(m_asked.begin(), m_asked.end(), [&](const Asked& asked) { return asked.key == key; });
}

/** One of those asked has answered, and how. */
void TalkControl::answered(const QString& key, bool success)
{
    if (const auto asked = findAsked(key); asked != m_asked.end()) {
        m_asked.erase(asked);
    }
    m_targets.setState(key, success ? TargetModel::Talking : TargetModel::Failed);
    if (success && !m_partners.contains(key)) {
        m_partners.append(key);
        Q_EMIT partnersChanged();
    }
    if (m_asked.empty() && m_partners.isEmpty()) {
        m_plugin.stopAudioCapture();
        setPhase(Idle);
        return;
    }
    if (!m_partners.isEmpty()) {
        setPhase(Talking);
        keepCapturing();
    }
}

/** A refusal stops the microphone, whoever else hears it. */
void TalkControl::keepCapturing()
{
    if (m_phase == Talking) {
        m_plugin.startAudioCapture();
    }
}

QString TalkControl::refusalOf(const QString& name) const
{
    return tr("%1 cannot be talked to: %2")
        .arg(name, ErrorMessages::withDetail(m_watch.errorCode(), m_watch.errorText()));
}

/** Ends the talk with a device that answers after it was given up: it must not hear what others are told.
 * In Idle, talkingChanged ends that talk. */
void TalkControl::endForgottenTalk()
{
    if (m_phase == Asking && m_partners.isEmpty()) {
        m_plugin.stopTalk(); // nobody else is in it
    } else if (m_phase == Talking) {
        stop(); // the plug-in cannot end the talk with one alone
        report(tr("Somebody answered too late and would have listened; the talk has ended."),
               tr("Press Talk again."));
    }
}

void TalkControl::startTalkResponse(bool success)
{
    // A camera is asked first, and alone.
    const QString key = m_asked.empty() ? QString() : m_asked.front().key;
    if (m_phase != Asking || !key.startsWith(QLatin1String("camera:")) ||
        m_watch.lastAnswered() != m_asked.front().request) {
        if (success) {
            endForgottenTalk();
        }
        keepCapturing();
        return;
    }
    const TargetModel::Target* target = m_targets.find(key);
    const QString name = target != nullptr ? target->name : QString();
    answered(key, success);
    if (!success) {
        report(refusalOf(name), m_watch.errorCode() == ReturnCode::cameraBusy
                                    ? tr("Press Talk again later, or choose another one.")
                                    : tr("Check the camera's power and network, or choose another one."));
        return;
    }
    askSpeakers();
}

void TalkControl::startTalkToIPAudioResponse(bool success, const QString& error, int speaker)
{
    const QString key = speakerKey(speaker);
    const auto asked = findAsked(key);
    if (asked != m_asked.end() && !success && asked->request != m_watch.lastAnswered()) {
        keepCapturing(); // the refusal of an earlier request
        return;
    }
    if (asked == m_asked.end()) {
        if (success && error.isEmpty() && !m_partners.contains(key) && !m_test.isRunning()) {
            endForgottenTalk();
        }
        keepCapturing();
        return;
    }
    const TargetModel::Target* target = m_targets.find(key);
    const QString name = target != nullptr ? target->name : QString::number(speaker);
    answered(key, success);
    if (!success) {
        report(
            tr("%1 cannot be talked to: %2")
                .arg(name, error.isEmpty() ? tr("the server refuses it") : ErrorMessages::shortened(error)),
            m_partners.isEmpty() && m_asked.empty()
                ? tr("Check the speaker's power and network, or choose another one.")
                : tr("The talk goes on with the others."));
    }
}

void TalkControl::talkingChanged()
{
    const bool talking = m_plugin.talking();
    if (talking && m_phase == Idle && !m_test.isRunning()) {
        // An answer that came after all: nobody waits for it any more.
        m_plugin.stopTalk();
        m_plugin.stopAudioCapture();
    } else if (!talking && m_phase == Talking) {
        m_partners.clear();
        m_asked.clear();
        m_targets.endStates();
        setPhase(Idle);
        Q_EMIT partnersChanged();
    }
}

void TalkControl::targetLost(const QVariantMap& fields)
{
    const QString camera = fields.value(Vocabulary::camId).toString();
    const QString key = camera.isEmpty() ? speakerKey(fields.value(Vocabulary::deviceID).toInt())
                                         : QStringLiteral("camera:") + camera;
    if (!m_partners.removeOne(key)) {
        return;
    }
    m_lost.append(key);
    m_targets.setState(key, TargetModel::Failed);
    Q_EMIT partnersChanged();
    const TargetModel::Target* target = m_targets.find(key);
    const QString error = ErrorMessages::shortened(fields.value(Vocabulary::error).toString());
    const QString name = target != nullptr ? target->name : key.section(QLatin1Char(':'), 1);
    report(error.isEmpty() ? tr("%1 was lost.").arg(name) : tr("%1 was lost: %2").arg(name, error),
           tr("The talk goes on with the others."));
}

void TalkControl::talkDisconnected()
{
    report(tr("The other side was lost; the talk has ended."),
           tr("Check its power and network, then press Talk again."));
}

void TalkControl::microphoneChanged()
{
    if (!m_plugin.audioInDevAvailable()) {
        report(tr("The microphone is gone; a talk that ran has ended."),
               tr("Plug it in again, then press Talk."));
    }
}

void TalkControl::timedOut(quint64 request)
{
    const auto asked = std::find_if(m_asked.begin(), m_asked.end(),
                                    [=](const Asked& each) { return each.request == request; });
    if (asked == m_asked.end()) {
        return;
    }
    m_targets.setState(asked->key, TargetModel::Failed);
    m_asked.erase(asked);
    if (m_asked.empty() && m_phase != Talking) {
        stop();
    }
    report(tr("The server did not answer in time."),
           tr("See whether it runs and can be reached; then press Talk again."));
}

void TalkControl::stop()
{
    m_asked.clear();
    m_plugin.stopTalk();
    m_plugin.stopAudioCapture(); // also while nobody has answered
    m_partners.clear();
    m_targets.endStates();
    setPhase(Idle);
    Q_EMIT partnersChanged();
}

void TalkControl::toggle()
{
    if (m_phase == Idle) {
        start();
    } else {
        stop();
    }
}

void TalkControl::press()
{
    m_key.liftMute(); // before the first sound
    if (m_key.hold() == Hold::Tail) {
        m_key.setHold(Hold::Down);
        start(); // to those chosen since
    } else if (m_phase == Idle) {
        start();
        if (m_phase == Idle) {
            m_key.restoreMute();
        } else {
            m_key.setHold(Hold::Down);
        }
    }
}

void TalkControl::release()
{
    if (m_key.hold() == Hold::Down) {
        m_key.setHold(Hold::Tail); // its end restores the mute
    } else {
        m_key.restoreMute();
    }
}

bool TalkControl::test(int speaker)
{
    if (m_phase != Idle || m_test.isRunning() || !m_online) {
        return false;
    }
    m_test.start(speaker);
    return true;
}

void TalkControl::forgetServer()
{
    stop();
    m_test.cancel();
    report(QString(), QString());
}

void TalkControl::tick()
{
    Q_EMIT secondsChanged();
    const QString silent = tr("The microphone gives no sound.");
    if (m_lastPacket.elapsed() > microphoneSilence) {
        report(silent, tr("Is it plugged in, and is it the one that the system uses?"));
    } else if (m_problem == silent) {
        report(QString(), QString());
    }
}
