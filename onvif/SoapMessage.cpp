#include "onvif/SoapMessage.h"

namespace {

const QString soap12 = QStringLiteral("http://www.w3.org/2003/05/soap-envelope");
const QString soap11 = QStringLiteral("http://schemas.xmlsoap.org/soap/envelope/");

QString withoutPrefix(const QString& name)
{
    return name.section(QLatin1Char(':'), -1);
}

SoapMessage::Fault faultOf(const XmlElement& element)
{
    SoapMessage::Fault fault;
    if (const XmlElement* code = element.child("faultcode")) { // SOAP 1.1
        fault.codes.append(withoutPrefix(code->text));
        fault.reason = plainText(element.textOf("faultstring"));
        return fault;
    }
    for (const XmlElement* code = element.child("Code"); code != nullptr; code = code->child("Subcode")) {
        if (const XmlElement* value = code->child("Value")) {
            fault.codes.append(withoutPrefix(value->text));
        }
    }
    if (const XmlElement* reason = element.child("Reason")) {
        fault.reason = plainText(reason->textOf("Text"));
    }
    return fault;
}

} // namespace

QByteArray SoapMessage::write(const QString& header, const QString& body)
{
    return QStringLiteral(
               "<?xml version=\"1.0\" encoding=\"UTF-8\"?>"
               "<s:Envelope xmlns:s=\"%1\"><s:Header>%2</s:Header><s:Body>%3</s:Body></s:Envelope>")
        .arg(soap12, header, body)
        .toUtf8();
}

std::optional<SoapMessage> SoapMessage::read(const QByteArray& bytes, int limit)
{
    const auto root = XmlElement::read(bytes, limit);
    if (!root || root->name != QLatin1String("Envelope") ||
        (root->space != soap12 && root->space != soap11)) {
        return std::nullopt;
    }
    const XmlElement* body = root->child("Body");
    if (body == nullptr || body->children.empty()) {
        return std::nullopt;
    }
    SoapMessage message;
    if (const XmlElement* header = root->child("Header")) {
        message.header = *header;
    }
    if (const XmlElement* fault = body->child("Fault")) {
        message.fault = faultOf(*fault);
    } else {
        message.body = body->children.front();
    }
    return message;
}
