#include "onvif/XmlElement.h"

#include <QXmlStreamReader>

#include <algorithm>

namespace {

/**
 * Whether a tag could have more attributes than are allowed. The reader compares each attribute with all
 * before it, so that a few hundred kilobytes of them would take seconds. An attribute has a "=", and no "<"
 * is allowed in its value.
 */
bool hasTooManyAttributes(const QString& document)
{
    int attributes = 0;
    for (const QChar character : document) {
        if (character == QLatin1Char('<')) {
            attributes = 0;
        } else if (character == QLatin1Char('=') && ++attributes > XmlElement::maxAttributes) {
            return true;
        }
    }
    return false;
}

XmlElement elementOf(const QXmlStreamReader& xml)
{
    XmlElement element;
    element.name = xml.name().toString();
    element.space = xml.namespaceUri().toString();
    element.token = xml.attributes().value(QLatin1String("token")).toString();
    return element;
}

} // namespace

std::optional<XmlElement> XmlElement::read(const QByteArray& document, int maxBytes)
{
    if (document.size() > maxBytes) {
        return std::nullopt;
    }
    const QString decoded = QString::fromUtf8(document);
    if (decoded.contains(QLatin1String("<!DOCTYPE")) || hasTooManyAttributes(decoded)) {
        return std::nullopt;
    }
    QXmlStreamReader xml(decoded);
    XmlElement root;
    std::vector<XmlElement*> open; // from the root to the one that is being read
    int count = 0;
    while (!xml.atEnd()) {
        switch (xml.readNext()) {
        case QXmlStreamReader::StartElement:
            if (++count > maxElements || open.size() >= maxDepth) {
                return std::nullopt;
            }
            if (open.empty()) {
                root = elementOf(xml);
                open.push_back(&root);
            } else {
                open.back()->children.push_back(elementOf(xml));
                open.push_back(&open.back()->children.back());
            }
            break;
        case QXmlStreamReader::EndElement:
            open.back()->text = open.back()->text.trimmed();
            open.pop_back();
            break;
        case QXmlStreamReader::Characters:
            if (!open.empty()) {
                open.back()->text += xml.text();
            }
            break;
        default:
            break;
        }
    }
    if (xml.hasError() || count == 0) {
        return std::nullopt;
    }
    return root;
}

const XmlElement* XmlElement::child(const char* wanted) const
{
    const auto found = std::find_if(children.begin(), children.end(), [wanted](const XmlElement& element) {
        return element.name == QLatin1String(wanted);
    });
    return found == children.end() ? nullptr : &*found;
}

const XmlElement* XmlElement::find(const char* wanted) const
{
    for (const XmlElement& element : children) {
        if (element.name == QLatin1String(wanted)) {
            return &element;
        }
        if (const XmlElement* found = element.find(wanted)) {
            return found;
        }
    }
    return nullptr;
}

std::vector<const XmlElement*> XmlElement::all(const char* wanted) const
{
    std::vector<const XmlElement*> found;
    for (const XmlElement& element : children) {
        if (element.name == QLatin1String(wanted)) {
            found.push_back(&element);
        } else {
            const std::vector<const XmlElement*> inside = element.all(wanted);
            found.insert(found.end(), inside.begin(), inside.end());
        }
    }
    return found;
}

QString XmlElement::textOf(const char* wanted) const
{
    const XmlElement* found = find(wanted);
    return found != nullptr ? found->text : QString();
}

QString plainText(const QString& text, int maxLength)
{
    QString plain = text.left(2 * maxLength);
    for (QChar& character : plain) {
        if (!character.isPrint() && !character.isSurrogate()) {
            character = QLatin1Char(' ');
        }
    }
    return plain.simplified().left(maxLength).trimmed();
}
