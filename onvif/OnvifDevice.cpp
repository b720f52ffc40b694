#include "onvif/OnvifDevice.h"

#include "onvif/CameraAddress.h"

#include <algorithm>

namespace {

const QString deviceSpace = QStringLiteral("http://www.onvif.org/ver10/device/wsdl");
const QString mediaSpace = QStringLiteral("http://www.onvif.org/ver10/media/wsdl");
const QString media2Space = QStringLiteral("http://www.onvif.org/ver20/media/wsdl");

bool isLoginError(OnvifError error)
{
    return error == OnvifError::LoginNeeded || error == OnvifError::LoginRefused;
}

/** Whether an error says that an ONVIF camera answered. */
bool hasAnswered(OnvifError error)
{
    return error == OnvifError::None || isLoginError(error) || error == OnvifError::NotSupported ||
           error == OnvifError::Absent || error == OnvifError::Refused;
}

QString element(const char* name, const QString& text)
{
    return QStringLiteral("<%1>%2</%1>").arg(QLatin1String(name), text.toHtmlEscaped());
}

/** How many there are, by an answer; empty when it does not tell. */
std::optional<int> countOf(const XmlElement* body, OnvifError error)
{
    if (body != nullptr) {
        return OnvifAnswers::count(*body);
    }
    return error == OnvifError::Absent ? std::optional(0) : std::nullopt;
}

/** Adds a codec unless it is there. */
void addCodec(std::vector<CameraCodec>& codecs, const CameraCodec& codec)
{
    const bool known = std::any_of(codecs.begin(), codecs.end(),
                                   [&](const CameraCodec& other) { return other.name == codec.name; });
    if (!known && !codec.name.isEmpty()) {
        codecs.push_back(codec);
    }
}

} // namespace

OnvifDevice::OnvifDevice(const QUrl& address, const OnvifLogin& login, QObject* parent)
    : OnvifDevice(address, login, Options(), parent)
{
}

OnvifDevice::OnvifDevice(const QUrl& address, const OnvifLogin& login, const Options& options,
                         QObject* parent)
    : QObject(parent), m_address(address), m_client(login, options.question)
{
    m_client.setAnyCertificate(options.anyCertificate);
    m_timer.setSingleShot(true);
    m_timer.setInterval(options.all);
    connect(&m_timer, &QTimer::timeout, this, [this] { finish(OnvifError::TimedOut); });
}

void OnvifDevice::askPresence()
{
    m_timer.stop();
    askDevice("GetSystemDateAndTime", QString(), false, [this](const XmlElement*, const SoapAnswer& answer) {
        Q_EMIT presenceKnown(hasAnswered(answer.error), answer.error);
    });
}

void OnvifDevice::askAbilities()
{
    m_media = m_media2 = QUrl();
    m_profilesKnown = false;
    m_sources.reset();
    m_outputs.reset();
    m_abilities = CameraAbilities();
    m_abilities.device = m_address;
    m_timer.start();
    askTime();
}

void OnvifDevice::askDevice(const char* request, const QString& inside, bool withLogin, const Use& use)
{
    const QString body =
        QStringLiteral("<%1 xmlns=\"%2\">%3</%1>").arg(QLatin1String(request), deviceSpace, inside);
    m_client.ask(m_address, deviceSpace + QLatin1Char('/') + QLatin1String(request), body, withLogin,
                 [use](const SoapAnswer& answer) {
                     use(answer.error == OnvifError::None ? &answer.body : nullptr, answer);
                 });
}

void OnvifDevice::askMedia(const char* request, const QString& inside, const Use& use)
{
    const bool two = m_service == MediaService::Media2;
    const QString space = two ? media2Space : mediaSpace;
    const QString body =
        QStringLiteral("<%1 xmlns=\"%2\">%3</%1>").arg(QLatin1String(request), space, inside);
    m_client.ask(two ? m_media2 : m_media, space + QLatin1Char('/') + QLatin1String(request), body, true,
                 [use](const SoapAnswer& answer) {
                     use(answer.error == OnvifError::None ? &answer.body : nullptr, answer);
                 });
}

void OnvifDevice::askTime()
{
    askDevice("GetSystemDateAndTime", QString(), false,
              [this](const XmlElement* body, const SoapAnswer& answer) {
                  if (!hasAnswered(answer.error)) {
                      finish(answer.error, answer.detail);
                      return;
                  }
                  if (const auto time = body != nullptr ? OnvifAnswers::time(*body) : std::nullopt) {
                      m_abilities.clockOffset = QDateTime::currentDateTimeUtc().msecsTo(*time);
                  }
                  m_client.setClockOffset(m_abilities.clockOffset);
                  askServices();
              });
}

void OnvifDevice::askServices()
{
    const QString inside = QStringLiteral("<IncludeCapability>false</IncludeCapability>");
    askDevice("GetServices", inside, true, [this](const XmlElement* body, const SoapAnswer& answer) {
        if (isLoginError(answer.error)) {
            finish(answer.error, answer.detail);
        } else if (body == nullptr || !useServices(OnvifAnswers::services(*body))) {
            askCapabilities(); // older cameras have nothing else
        }
    });
}

void OnvifDevice::askCapabilities()
{
    const QString inside = element("Category", QStringLiteral("All"));
    askDevice("GetCapabilities", inside, true, [this](const XmlElement* body, const SoapAnswer& answer) {
        if (body == nullptr) {
            finish(answer.error, answer.detail);
        } else if (!useServices(OnvifAnswers::capabilities(*body))) {
            finish(OnvifError::NotSupported, QStringLiteral("it has no media service"));
        }
    });
}

/** Goes on with the services, if there is one; returns whether it went on or ended. */
bool OnvifDevice::useServices(const OnvifAnswers::Services& services)
{
    m_media = CameraAddress::reported(services.media, m_address, CameraAddress::Service).value_or(QUrl());
    m_media2 = CameraAddress::reported(services.media2, m_address, CameraAddress::Service).value_or(QUrl());
    if (services.media.isEmpty() && services.media2.isEmpty()) {
        return false;
    }
    if (m_media.isEmpty() && m_media2.isEmpty()) {
        finish(OnvifError::Elsewhere, QStringLiteral("of its media service"));
        return true;
    }
    m_service = m_media2.isEmpty() ? MediaService::Media : MediaService::Media2;
    askInformation();
    return true;
}

void OnvifDevice::askInformation()
{
    askDevice("GetDeviceInformation", QString(), true,
              [this](const XmlElement* body, const SoapAnswer& answer) {
                  if (isLoginError(answer.error)) {
                      finish(answer.error, answer.detail);
                      return;
                  }
                  if (body != nullptr) {
                      m_abilities.manufacturer = plainText(body->textOf("Manufacturer"));
                      m_abilities.model = plainText(body->textOf("Model"));
                      m_abilities.firmware = plainText(body->textOf("FirmwareVersion"));
                  }
                  askProfiles();
              });
}

void OnvifDevice::askProfiles()
{
    const bool two = m_service == MediaService::Media2;
    const QString inside = two ? element("Type", QStringLiteral("All")) : QString();
    askMedia("GetProfiles", inside, [this, two](const XmlElement* body, const SoapAnswer& answer) {
        if (body == nullptr && two && !isLoginError(answer.error) && !m_media.isEmpty()) {
            m_service = MediaService::Media;
            askProfiles();
            return;
        }
        if (body == nullptr) {
            finish(answer.error, answer.detail);
            return;
        }
        m_abilities.streams = OnvifAnswers::profiles(*body, m_service);
        m_profilesKnown = true;
        std::stable_sort(m_abilities.streams.begin(), m_abilities.streams.end(),
                         [](const CameraStream& one, const CameraStream& other) {
                             return one.hasVoice + one.hasLoudspeaker > other.hasVoice + other.hasLoudspeaker;
                         });
        askStream(0);
    });
}

void OnvifDevice::askStream(std::size_t index)
{
    if (index >= m_abilities.streams.size() || index >= maxStreams) {
        askSources();
        return;
    }
    const QString profile = element("ProfileToken", m_abilities.streams[index].token);
    const QString setup =
        m_service == MediaService::Media2
            ? element("Protocol", QStringLiteral("RTSP"))
            : QStringLiteral(
                  "<StreamSetup><Stream xmlns=\"http://www.onvif.org/ver10/schema\">RTP-Unicast</Stream>"
                  "<Transport xmlns=\"http://www.onvif.org/ver10/schema\"><Protocol>RTSP</Protocol>"
                  "</Transport></StreamSetup>");
    askMedia("GetStreamUri", setup + profile, [this, index](const XmlElement* body, const SoapAnswer&) {
        CameraStream& stream = m_abilities.streams[index];
        if (body != nullptr) {
            const QString uri = OnvifAnswers::uri(*body);
            stream.address = CameraAddress::reported(uri, m_address, CameraAddress::Stream).value_or(QUrl());
            if (stream.address.isEmpty() && !uri.isEmpty()) {
                m_abilities.remarks.append(
                    QStringLiteral("The address of the stream \"%1\" is none of this camera; it is not used.")
                        .arg(stream.name));
            }
        }
        askStream(index + 1);
    });
}

void OnvifDevice::askSources()
{
    const bool two = m_service == MediaService::Media2;
    askMedia(two ? "GetAudioSourceConfigurations" : "GetAudioSources", QString(),
             [this](const XmlElement* body, const SoapAnswer& answer) {
                 m_sources = countOf(body, answer.error);
                 askOutputs();
             });
}

void OnvifDevice::askOutputs()
{
    const bool two = m_service == MediaService::Media2;
    askMedia(two ? "GetAudioOutputConfigurations" : "GetAudioOutputs", QString(),
             [this](const XmlElement* body, const SoapAnswer& answer) {
                 m_outputs = countOf(body, answer.error);
                 m_outputs == 0 ? askEncoders() : askDecoders();
             });
}

void OnvifDevice::askDecoders()
{
    askMedia("GetAudioDecoderConfigurationOptions", QString(),
             [this](const XmlElement* body, const SoapAnswer&) {
                 if (body != nullptr) {
                     m_abilities.talkCodecs = OnvifAnswers::decoders(*body, m_service);
                 }
                 askEncoders();
             });
}

void OnvifDevice::askEncoders()
{
    askMedia("GetAudioEncoderConfigurations", QString(), [this](const XmlElement* body, const SoapAnswer&) {
        if (body != nullptr) {
            m_abilities.voiceCodecs = OnvifAnswers::encoders(*body);
        }
        askSnapshot();
    });
}

void OnvifDevice::askSnapshot()
{
    const auto& streams = m_abilities.streams;
    const auto picture = std::find_if(streams.begin(), streams.end(),
                                      [](const CameraStream& stream) { return stream.hasPicture; });
    if (picture == streams.end()) {
        finish(OnvifError::None);
        return;
    }
    askMedia("GetSnapshotUri", element("ProfileToken", picture->token),
             [this](const XmlElement* body, const SoapAnswer&) {
                 if (body != nullptr) {
                     m_abilities.snapshot =
                         CameraAddress::reported(OnvifAnswers::uri(*body), m_address, CameraAddress::Snapshot)
                             .value_or(QUrl());
                 }
                 finish(OnvifError::None);
             });
}

void OnvifDevice::judgeVoice()
{
    const auto& streams = m_abilities.streams;
    const auto isHeard = [](const CameraStream& stream) {
        return stream.hasVoice && !stream.address.isEmpty();
    };
    if (std::any_of(streams.begin(), streams.end(), isHeard)) {
        m_abilities.speaks = Ability::Yes;
        for (const CameraStream& stream : streams) {
            addCodec(m_abilities.voiceCodecs, {stream.voiceCodec});
        }
        return;
    }
    m_abilities.voiceCodecs.clear();
    const bool inProfile = std::any_of(streams.begin(), streams.end(),
                                       [](const CameraStream& stream) { return stream.hasVoice; });
    m_abilities.speaks = inProfile || !m_sources ? Ability::Unknown : Ability::No;
    if (inProfile) {
        m_abilities.speaksReason = QStringLiteral("the camera gives no address for a stream with sound");
    } else if (m_sources == 0) {
        m_abilities.speaksReason = QStringLiteral("the camera has no microphone");
    } else if (m_sources) {
        m_abilities.speaksReason =
            QStringLiteral("the camera has a microphone, but sound is switched off in its media profiles");
    } else {
        m_abilities.speaksReason = QStringLiteral("no media profile of the camera names sound");
    }
}

void OnvifDevice::judgeLoudspeaker()
{
    const auto& streams = m_abilities.streams;
    const bool inProfile = std::any_of(streams.begin(), streams.end(),
                                       [](const CameraStream& stream) { return stream.hasLoudspeaker; });
    if (inProfile) {
        m_abilities.hears = Ability::Yes;
    } else if (m_outputs == 0) {
        m_abilities.hears = Ability::No;
        m_abilities.hearsReason = QStringLiteral("the camera has no loudspeaker");
    } else if (m_outputs) {
        m_abilities.hasUnusedLoudspeaker = true;
        m_abilities.hearsReason = QStringLiteral(
            "the camera has a loudspeaker, but none of its media profiles uses it; it may refuse a talk");
    } else {
        m_abilities.hearsReason = QStringLiteral("the camera does not tell whether it has a loudspeaker");
    }
}

/** Concludes what the camera can do from what it answered. */
void OnvifDevice::judge()
{
    if (m_profilesKnown) {
        judgeVoice();
        judgeLoudspeaker();
        return;
    }
    m_abilities.speaksReason = m_abilities.hearsReason = onvifErrorText(m_abilities.error);
}

void OnvifDevice::finish(OnvifError error, const QString& detail)
{
    m_timer.stop();
    m_client.cancel();
    m_abilities.error = error;
    m_abilities.detail = detail;
    judge();
    const CameraAbilities known = m_abilities;
    Q_EMIT abilitiesKnown(known); // may delete this object
}
