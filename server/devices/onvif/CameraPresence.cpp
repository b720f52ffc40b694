#include "server/devices/onvif/CameraPresence.h"

#include "onvif/CameraAddress.h"
#include "onvif/OnvifDevice.h"
#include "server/devices/onvif/LocatedTalk.h"
#include "server/devices/onvif/RtspQuestion.h"

#include <algorithm>

CameraPresence::CameraPresence(PresencePace pace) : m_pace(pace)
{
    connect(&m_timer, &QTimer::timeout, this, &CameraPresence::askNext);
}

void CameraPresence::setRecords(const QList<CameraRecord>& records)
{
    QHash<QString, State> before;
    before.swap(m_states);
    m_order.clear();
    for (const CameraRecord& record : records) {
        State state = before.value(record.id);
        if (state.version == 0 || state.record.address != record.address) {
            state = State();
            state.version = ++m_lastVersion;
            if (!m_urgent.contains(record.id)) {
                m_urgent.append(record.id);
            }
        }
        state.record = record;
        m_states.insert(record.id, state);
        m_order.append(record.id);
    }
    m_next = m_order.isEmpty() ? 0 : m_next % m_order.size();
    if (m_order.isEmpty() || m_pace.period.count() == 0) {
        m_timer.stop();
        m_urgent.clear();
        return;
    }
    const int interval = std::max(1, static_cast<int>(m_pace.period.count() / m_order.size()));
    if (!m_timer.isActive() || m_timer.interval() != interval) {
        m_timer.start(interval);
    }
    askUrgent();
}

CameraPresence::State* CameraPresence::find(const QString& camera, quint64 version)
{
    const auto state = m_states.find(camera);
    return state != m_states.end() && state->version == version ? &*state : nullptr;
}

/** Asks the next camera in the order, when not too many are being asked. */
void CameraPresence::askNext()
{
    askUrgent();
    if (m_order.isEmpty() || m_asking >= m_pace.atOnce) {
        return;
    }
    const QString camera = m_order.at(m_next);
    m_next = (m_next + 1) % m_order.size();
    ask(camera);
}

void CameraPresence::askUrgent()
{
    while (!m_urgent.isEmpty() && m_asking < m_pace.atOnce) {
        ask(m_urgent.takeFirst());
    }
}

/** Asks a camera, unless it is being asked or talked to. */
bool CameraPresence::ask(const QString& camera)
{
    const auto state = m_states.find(camera);
    if (state == m_states.end() || state->asking || state->talks > 0) {
        return false;
    }
    const quint64 version = state->version;
    const int time = static_cast<int>(m_pace.answer.count());
    const QString& address = state->record.address;
    state->asking = true;
    ++m_asking;
    if (LocatedTalk::isStream(address)) {
        auto* question = new RtspQuestion(address, time, this);
        connect(question, &RtspQuestion::answered, this, [this, question, camera, version](bool isThere) {
            question->deleteLater();
            take(camera, version, isThere);
        });
        return true;
    }
    QString error;
    OnvifDevice::Options options;
    options.question = time;
    options.anyCertificate = true; // nothing secret is said or believed
    auto* device = new OnvifDevice(CameraAddress::deviceService(address, &error).value_or(QUrl()),
                                   OnvifLogin(), options, this);
    connect(device, &OnvifDevice::presenceKnown, this, [this, device, camera, version](bool online) {
        device->deleteLater();
        take(camera, version, online);
    });
    device->askPresence();
    return true;
}

void CameraPresence::take(const QString& camera, quint64 version, bool online)
{
    --m_asking;
    if (State* state = find(camera, version)) {
        state->asking = false;
        if (state->talks == 0) {
            set(*state, online);
        }
    }
    askUrgent();
}

void CameraPresence::set(State& state, bool online)
{
    if (state.online != online) {
        state.online = online;
        Q_EMIT changed();
    }
}

void CameraPresence::talkOpened(const QString& camera, quint64 version)
{
    if (State* state = find(camera, version)) {
        ++state->talks;
        set(*state, true);
    }
}

void CameraPresence::talkEnded(const QString& camera, quint64 version)
{
    if (State* state = find(camera, version)) {
        --state->talks;
    }
}

void CameraPresence::noticed(const QString& camera, quint64 version, bool online)
{
    State* state = find(camera, version);
    if (state == nullptr || state->talks > 0) {
        return;
    }
    set(*state, online);
    if (!online && !m_urgent.contains(camera) && m_pace.period.count() > 0) {
        m_urgent.append(camera);
    }
    askUrgent();
}
