// Any datagram as the answer to a probe: bounded, and with no address but the sender's own.

#include "onvif/CameraAddress.h"
#include "onvif/ProbeMessage.h"
#include "onvif/XmlElement.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const QHostAddress sender(QStringLiteral("10.0.0.5"));
    const QByteArray datagram(reinterpret_cast<const char*>(data), static_cast<int>(size));
    const auto found = ProbeMessage::matches(datagram, {QStringLiteral("urn:uuid:1")}, sender);
    if (found.size() > ProbeMessage::maxMatches) {
        std::abort();
    }
    for (const ProbeMessage::Match& match : found) {
        const bool own =
            match.address.isEmpty() ||
            (CameraAddress::isSameHost(match.address.host(), sender.toString()) &&
             match.address.userInfo().isEmpty() && match.address.scheme().startsWith(QLatin1String("http")));
        const bool plain = match.name == plainText(match.name) &&
                           match.hardware == plainText(match.hardware) &&
                           match.location == plainText(match.location) && !match.endpoint.isEmpty();
        if (!own || !plain) {
            std::abort();
        }
    }
    return 0;
}
