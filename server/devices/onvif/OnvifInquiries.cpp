#include "server/devices/onvif/OnvifInquiries.h"

#include "onvif/CameraAddress.h"
#include "onvif/OnvifDevice.h"
#include "onvif/XmlElement.h"
#include "protocol/Limits.h"
#include "server/devices/onvif/LocatedTalk.h"

#include <algorithm>

namespace {

constexpr int httpPort = 80;
constexpr int maxRemark = 256; // characters

/** An address without any character that could command a terminal. */
QString textOf(const QUrl& address)
{
    return address.toString(QUrl::FullyEncoded);
}

CameraAbility abilityOf(Ability ability)
{
    switch (ability) {
    case Ability::No:
        return CameraAbility::No;
    case Ability::Unknown:
        break;
    case Ability::Yes:
        return CameraAbility::Yes;
    }
    return CameraAbility::Unknown;
}

CameraAbility abilityOf(bool has)
{
    return has ? CameraAbility::Yes : CameraAbility::No;
}

/** Codecs as SDP names them (RFC 8866, clause 6.6): "PCMU/8000". */
QStringList textsOf(const std::vector<CameraCodec>& codecs)
{
    QStringList texts;
    for (const CameraCodec& codec : codecs) {
        for (const int rate : codec.rates) {
            texts.append(QStringLiteral("%1/%2").arg(codec.name).arg(rate));
        }
        if (codec.rates.isEmpty()) {
            texts.append(codec.name);
        }
    }
    return texts;
}

/** Whether a server has one of a camera's codecs, as ONVIF names them; a camera may also name none. */
bool hasOneOf(const std::vector<CameraCodec>& codecs)
{
    return codecs.empty() || std::any_of(codecs.begin(), codecs.end(), [](const CameraCodec& codec) {
               static const QStringList known{QString(),
                                              QStringLiteral("G711"),
                                              QStringLiteral("PCMU"),
                                              QStringLiteral("PCMA"),
                                              QStringLiteral("L16"),
                                              QStringLiteral("MPEG4-GENERIC")};
               return known.contains(codec.name) || codec.name.startsWith(QLatin1String("G726"));
           });
}

/** What of a device is told to clients: one address that a record can have, and words of a bounded length. */
FoundCameraEntry entryOf(const FoundCamera& camera)
{
    FoundCameraEntry entry{camera.name, camera.hardware, camera.location, QString(), QString()};
    QStringList addresses;
    for (const QUrl& url : camera.addresses) {
        if (const QString address = textOf(url); address.size() <= Limits::maxUrlLength) {
            addresses.append(address);
        }
    }
    entry.address = addresses.value(0);
    if (addresses.size() > 1) {
        entry.remark = plainText(
            QStringLiteral("also at %1").arg(addresses.mid(1).join(QStringLiteral(", "))), maxRemark);
    } else if (addresses.isEmpty()) {
        entry.remark = camera.addresses.isEmpty() && camera.isElsewhere
                           ? QStringLiteral("names only addresses of other hosts")
                           : QStringLiteral("names no address that can be used");
    }
    return entry;
}

} // namespace

CameraReport OnvifInquiries::reportOf(const CameraRecord& camera, const CameraAbilities& abilities)
{
    CameraReport report;
    report.manufacturer = abilities.manufacturer;
    report.model = abilities.model;
    report.firmware = abilities.firmware;
    report.speaks = abilityOf(abilities.speaks);
    report.hears = abilityOf(abilities.hears);
    report.speaksReason = abilities.speaksReason;
    report.hearsReason = abilities.hearsReason;
    report.voiceCodecs = textsOf(abilities.voiceCodecs);
    report.talkCodecs = textsOf(abilities.talkCodecs);
    for (const CameraStream& stream : abilities.streams) {
        report.streams.append({stream.name, textOf(stream.address), abilityOf(stream.hasVoice),
                               abilityOf(stream.hasLoudspeaker)});
    }
    report.remarks = abilities.remarks;
    report.error = errorOf(camera, abilities);
    if (abilities.speaks == Ability::Yes && !hasOneOf(abilities.voiceCodecs)) {
        report.speaks = CameraAbility::No;
        report.speaksReason = QStringLiteral("the camera speaks in %1, which this server cannot decode")
                                  .arg(report.voiceCodecs.join(QStringLiteral(", ")));
    }
    if (abilities.hears == Ability::Yes && !hasOneOf(abilities.talkCodecs)) {
        report.hears = CameraAbility::No;
        report.hearsReason =
            QStringLiteral("the camera's loudspeaker takes %1, which this server cannot make")
                .arg(report.talkCodecs.join(QStringLiteral(", ")));
    }
    return report;
}

OnvifInquiries::OnvifInquiries(const OnvifConfig& config)
    : m_search(config.search), m_servicePort(config.servicePort)
{
    connect(&m_discovery, &OnvifDiscovery::finished, this, [this] {
        FoundCameras found;
        for (const FoundCamera& camera : m_discovery.found()) {
            found.cameras.append(entryOf(camera));
        }
        finishSearch(found);
    });
}

void OnvifInquiries::find(const CameraBackend::TakeFound& take)
{
    m_waiting.append(take);
    if (m_waiting.size() > 1 || m_discovery.start(m_search.interfaces(), m_search.options)) {
        return;
    }
    FoundCameras none;
    none.error = QStringLiteral("the server has no network interface to look for cameras on");
    QMetaObject::invokeMethod(
        this, [this, none] { finishSearch(none); }, Qt::QueuedConnection);
}

void OnvifInquiries::finishSearch(const FoundCameras& found)
{
    QList<CameraBackend::TakeFound> waiting;
    waiting.swap(m_waiting); // one of them may start the next search
    for (const CameraBackend::TakeFound& take : qAsConst(waiting)) {
        take(found);
    }
}

std::optional<QUrl> OnvifInquiries::deviceService(const QString& address, int port, QString* error)
{
    const QUrl url(address, QUrl::StrictMode);
    if (url.scheme() != QLatin1String("rtsp") && url.scheme() != QLatin1String("rtsps")) {
        return CameraAddress::deviceService(address, error);
    }
    auto service = CameraAddress::deviceService(url.host(), error);
    if (service && port != service->port(httpPort)) {
        service->setPort(port);
    }
    return service;
}

QString OnvifInquiries::errorOf(const CameraRecord& camera, const CameraAbilities& abilities)
{
    const bool isSilent = abilities.error == OnvifError::NotReachable ||
                          (abilities.error == OnvifError::TimedOut && abilities.manufacturer.isEmpty());
    if (abilities.error == OnvifError::Untrusted) {
        return errorSentence(abilities) + QStringLiteral("; its setting \"anyCertificate\" accepts it");
    }
    const bool isAnswered = !isSilent && abilities.error != OnvifError::NotOnvif;
    if (isAnswered || abilities.device.isEmpty()) {
        return errorSentence(abilities);
    }
    const QString service =
        textOf(abilities.device.adjusted(QUrl::RemoveUserInfo | QUrl::RemoveQuery | QUrl::RemoveFragment));
    const QString words = isSilent ? QStringLiteral("the camera does not answer ONVIF questions at %1")
                                   : QStringLiteral("what answers at %1 is no ONVIF camera");
    return words.arg(service) +
           (abilities.detail.isEmpty() ? QString() : QStringLiteral(" (%1)").arg(abilities.detail)) +
           (LocatedTalk::isStream(camera.address) ? QStringLiteral("; talks may still work") : QString());
}

void OnvifInquiries::ask(const CameraRecord& camera, const CameraBackend::TakeReport& take)
{
    CameraReport none;
    const auto address = deviceService(camera.address, m_servicePort, &none.error);
    if (!address) {
        QMetaObject::invokeMethod(
            this, [take, none] { take(none); }, Qt::QueuedConnection);
        return;
    }
    OnvifDevice::Options options;
    options.anyCertificate = camera.settings.anyCertificate;
    auto* device = new OnvifDevice(*address, {camera.username, camera.password}, options, this);
    connect(device, &OnvifDevice::abilitiesKnown, this,
            [device, camera, take](const CameraAbilities& abilities) {
                device->deleteLater();
                take(reportOf(camera, abilities));
            });
    device->askAbilities();
}
