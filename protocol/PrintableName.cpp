#include "protocol/PrintableName.h"

#include "protocol/Words.h"

#include <algorithm>

namespace {

constexpr int maxCharacters = 30; // a reason for closing a web socket has 123 bytes, RFC 6455, clause 5.5

/** Returns whether a character does something to a line instead of being shown in it. */
bool isControl(QChar character)
{
    const ushort code = character.unicode();
    // The marks U+061C, U+200E and U+200F stay: they turn nothing around, and names in Hebrew and Arabic have
    // them.
    const bool direction = (code >= 0x202A && code <= 0x202E) || (code >= 0x2066 && code <= 0x2069);
    return direction || character.category() == QChar::Other_Control ||
           character.category() == QChar::Separator_Line ||
           character.category() == QChar::Separator_Paragraph;
}

/** Returns whether the value under a key is shown to people. */
bool isShown(const QString& key)
{
    const QString* const shown[] = {
        &Vocabulary::deviceName, &Vocabulary::groupName, &Vocabulary::audioName, &Vocabulary::scheduleName,
        &Vocabulary::alarmName,  &Vocabulary::error,     &Words::camName,
    };
    return std::any_of(std::begin(shown), std::end(shown), [&](const QString* each) { return *each == key; });
}

} // namespace

QString printableName(const QString& name)
{
    QString shown = name.left(maxCharacters);
    for (QChar& character : shown) {
        character = character.isPrint() ? character : QChar(QLatin1Char('?'));
    }
    return QStringLiteral("\"%1%2\"").arg(shown, QLatin1String(name.size() > maxCharacters ? "..." : ""));
}

QString printableText(const QString& text)
{
    QString shown = text;
    for (QChar& character : shown) {
        character = isControl(character) ? QChar(QLatin1Char('?')) : character;
    }
    return shown;
}

QVariant withPrintableNames(const QVariant& payload)
{
    if (payload.type() == QVariant::List) {
        QVariantList list = payload.toList();
        for (QVariant& entry : list) {
            entry = withPrintableNames(entry);
        }
        return list;
    }
    if (payload.type() != QVariant::Map) {
        return payload;
    }
    QVariantMap map = payload.toMap();
    for (auto entry = map.begin(); entry != map.end(); ++entry) {
        const bool shown = entry->type() == QVariant::String && isShown(entry.key());
        *entry = shown ? QVariant(printableText(entry->toString())) : withPrintableNames(*entry);
    }
    return map;
}
