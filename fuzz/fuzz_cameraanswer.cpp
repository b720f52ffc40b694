// Any bytes as the answer of a camera to each of the questions: bounded, in lines for people, and with no
// address but its own.

#include "onvif/CameraAddress.h"
#include "onvif/OnvifAnswers.h"
#include "onvif/SoapMessage.h"

#include <cstdlib>

namespace {

void check(bool good)
{
    if (!good) {
        std::abort();
    }
}

void checkAddress(const QString& address)
{
    static const QUrl device(QStringLiteral("http://198.51.100.7:8080/onvif/device_service"));
    for (const auto purpose : {CameraAddress::Service, CameraAddress::Stream, CameraAddress::Snapshot}) {
        const auto url = CameraAddress::reported(address, device, purpose);
        check(!url || (CameraAddress::isSameHost(url->host(), device.host()) && url->userInfo().isEmpty()));
    }
}

void checkCodecs(const std::vector<CameraCodec>& codecs)
{
    check(codecs.size() <= OnvifAnswers::maxCodecs);
    for (const CameraCodec& codec : codecs) {
        check(!codec.name.isEmpty() && codec.name == plainText(codec.name));
        check(codec.rates.size() <= OnvifAnswers::maxRates);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char*>(data), static_cast<int>(size));
    const auto message = SoapMessage::read(bytes, SoapMessage::maxBytes);
    if (!message) {
        return 0;
    }
    if (message->fault) {
        check(message->fault->reason == plainText(message->fault->reason));
        return 0;
    }
    const XmlElement& body = message->body;
    const auto time = OnvifAnswers::time(body);
    check(!time || time->isValid());
    for (const auto& services : {OnvifAnswers::services(body), OnvifAnswers::capabilities(body)}) {
        checkAddress(services.media);
        checkAddress(services.media2);
    }
    checkAddress(OnvifAnswers::uri(body));
    for (const MediaService service : {MediaService::Media, MediaService::Media2}) {
        const auto profiles = OnvifAnswers::profiles(body, service);
        check(profiles.size() <= OnvifAnswers::maxProfiles);
        for (const CameraStream& stream : profiles) {
            check(stream.name == plainText(stream.name) && stream.address.isEmpty());
        }
        checkCodecs(OnvifAnswers::decoders(body, service));
    }
    checkCodecs(OnvifAnswers::encoders(body));
    check(OnvifAnswers::count(body) >= 0);
    return 0;
}
