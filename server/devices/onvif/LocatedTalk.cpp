#include "server/devices/onvif/LocatedTalk.h"

#include "onvif/OnvifDevice.h"
#include "protocol/ServerReply.h"
#include "server/devices/onvif/LineRefusal.h"
#include "server/devices/onvif/LineThreads.h"
#include "server/devices/onvif/OnvifInquiries.h"
#include "server/devices/onvif/OnvifRefusal.h"
#include "server/devices/onvif/OnvifTalk.h"

#include <algorithm>

namespace {

constexpr int explanationTime = 2000; // ms to ask a camera why it refuses a talk

/** The stream to talk to: one with a loudspeaker, else the first with an address. */
QString streamOf(const CameraAbilities& abilities)
{
    const auto& streams = abilities.streams;
    auto found = std::find_if(streams.begin(), streams.end(), [](const CameraStream& stream) {
        return stream.hasLoudspeaker && !stream.address.isEmpty();
    });
    if (found == streams.end()) {
        found = std::find_if(streams.begin(), streams.end(),
                             [](const CameraStream& stream) { return !stream.address.isEmpty(); });
    }
    return found == streams.end() ? QString() : found->address.toString(QUrl::FullyEncoded);
}

} // namespace

LocatedTalk::LocatedTalk(CameraRecord camera, OnvifConfig config, LineThreads& threads, const QString& stream)
    : m_camera(std::move(camera)), m_config(std::move(config)), m_threads(threads),
      m_wasKnown(!stream.isEmpty())
{
    m_clock.start();
    if (isStream(m_camera.address)) {
        m_wasKnown = false;
        openLine(m_camera.address);
    } else if (m_wasKnown) {
        openLine(stream);
    } else {
        locate();
    }
}

LocatedTalk::~LocatedTalk() = default;

bool LocatedTalk::isStream(const QString& address)
{
    return address.startsWith(QLatin1String("rtsp://"), Qt::CaseInsensitive) ||
           address.startsWith(QLatin1String("rtsps://"), Qt::CaseInsensitive);
}

int LocatedTalk::remaining() const
{
    return std::max(1, m_camera.settings.openTimeout - static_cast<int>(m_clock.elapsed()));
}

bool LocatedTalk::hear(const QByteArray& packet)
{
    return m_line && m_line->hear(packet);
}

void LocatedTalk::close()
{
    m_closing = true;
    m_device.reset();
    if (m_line && !m_lineClosed) {
        m_line->close();
    } else {
        QMetaObject::invokeMethod(this, &DeviceTalk::closed, Qt::QueuedConnection);
    }
}

/** Asks the camera what it can do. @param time that it has, ms */
template<class Take>
void LocatedTalk::ask(int time, Take take)
{
    QString error;
    const auto address = OnvifInquiries::deviceService(m_camera.address, m_config.servicePort, &error);
    if (!address) {
        CameraAbilities none;
        none.error = OnvifError::NotReachable;
        none.detail = error;
        QMetaObject::invokeMethod(
            this, [take, none] { take(none); }, Qt::QueuedConnection);
        return;
    }
    OnvifDevice::Options options;
    options.all = time;
    options.anyCertificate = m_camera.settings.anyCertificate;
    m_device =
        std::make_unique<OnvifDevice>(*address, OnvifLogin{m_camera.username, m_camera.password}, options);
    connect(m_device.get(), &OnvifDevice::abilitiesKnown, this, [this, take](const CameraAbilities& known) {
        m_device.release()->deleteLater();
        m_abilities = std::make_unique<CameraAbilities>(known);
        take(known);
    });
    m_device->askAbilities();
}

void LocatedTalk::locate()
{
    ask(remaining(), [this](const CameraAbilities& abilities) {
        if (!m_closing) {
            takeStream(abilities);
        }
    });
}

void LocatedTalk::takeStream(const CameraAbilities& abilities)
{
    const QString stream = streamOf(abilities);
    if (abilities.hears == Ability::No) {
        Q_EMIT refused(ReturnCode::noLoudspeaker, abilities.hearsReason);
    } else if (!stream.isEmpty()) {
        Q_EMIT located(stream);
        openLine(stream);
    } else if (abilities.error != OnvifError::None) {
        Q_EMIT refused(returnCodeOf(abilities.error, ReturnCode::talkRefused),
                       OnvifInquiries::errorOf(m_camera, abilities));
    } else {
        Q_EMIT refused(ReturnCode::talkRefused, QStringLiteral("the camera gives no address of a stream"));
    }
}

void LocatedTalk::openLine(const QString& stream)
{
    m_stream = stream;
    if (!m_threads.hasRoom()) {
        QMetaObject::invokeMethod(
            this, [this] { Q_EMIT refused(LineRefusal::noRoom().returnCode, LineRefusal::noRoom().reason); },
            Qt::QueuedConnection);
        return;
    }
    CameraRecord camera = m_camera;
    camera.address = stream;
    camera.settings.openTimeout = remaining();
    m_lineClosed = false;
    m_line = std::make_unique<OnvifTalk>(camera, m_config, m_threads);
    const int number = ++m_lineNumber;
    // The line signals on threads of its own.
    connect(m_line.get(), &DeviceTalk::opened, this, [this, number] {
        if (number == m_lineNumber) {
            Q_EMIT opened();
        }
    });
    connect(m_line.get(), &DeviceTalk::refused, this,
            [this, number](const QString& returnCode, const QString& reason) {
                if (number == m_lineNumber && !m_closing) {
                    takeRefusal(returnCode, reason);
                }
            });
    connect(m_line.get(), &DeviceTalk::lost, this, [this, number](const QString& reason) {
        if (number == m_lineNumber) {
            Q_EMIT lost(reason);
        }
    });
    connect(m_line.get(), &DeviceTalk::spoke, this, [this, number](const VoicePacket& packet) {
        if (number == m_lineNumber) {
            Q_EMIT spoke(packet);
        }
    });
    connect(m_line.get(), &DeviceTalk::closed, this, [this, number] {
        m_lineClosed = m_lineClosed || number == m_lineNumber;
        if (number == m_lineNumber) {
            Q_EMIT closed();
        }
    });
}

void LocatedTalk::takeRefusal(const QString& returnCode, const QString& reason)
{
    const bool isUnclear = returnCode == ReturnCode::talkRefused || returnCode == ReturnCode::noLoudspeaker;
    if (m_wasKnown && (isUnclear || returnCode == ReturnCode::cameraOffline)) {
        m_wasKnown = false; // the stream may have moved
        Q_EMIT located(QString());
        locate();
        return;
    }
    if (!isUnclear) {
        Q_EMIT refused(returnCode, reason);
    } else if (m_abilities) {
        explain(*m_abilities, returnCode, reason);
    } else {
        ask(std::min(remaining(), explanationTime), [=](const CameraAbilities& abilities) {
            if (!m_closing) {
                explain(abilities, returnCode, reason);
            }
        });
    }
}

/** Adds to a refusal what the camera says by ONVIF. */
void LocatedTalk::explain(const CameraAbilities& abilities, const QString& returnCode, const QString& reason)
{
    const QString stream = streamOf(abilities);
    QString more;
    if (abilities.error == OnvifError::None && abilities.hasUnusedLoudspeaker) {
        more = QStringLiteral("; ") + abilities.hearsReason;
    } else if (abilities.error == OnvifError::None && abilities.hears == Ability::Yes && stream != m_stream &&
               !stream.isEmpty()) {
        more = QStringLiteral("; its loudspeaker is in the stream %1").arg(stream);
    }
    if (abilities.hears == Ability::No) {
        Q_EMIT refused(ReturnCode::noLoudspeaker, abilities.hearsReason);
    } else {
        Q_EMIT refused(returnCode, reason + more);
    }
}
