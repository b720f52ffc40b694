#include "protocol/PrintableName.h"

namespace {

constexpr int maxCharacters = 30; // a reason for closing a web socket has 123 bytes, RFC 6455, clause 5.5

} // namespace

QString printableName(const QString& name)
{
    QString shown = name.left(maxCharacters);
    for (QChar& character : shown) {
        character = character.isPrint() ? character : QChar(QLatin1Char('?'));
    }
    return QStringLiteral("\"%1%2\"").arg(shown, QLatin1String(name.size() > maxCharacters ? "..." : ""));
}
