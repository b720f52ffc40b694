#include "server/talks/TalkDestinations.h"

std::optional<QStringList> parseTalkDestinations(const QString& targets)
{
    const QString open = QStringLiteral("<Dest>");
    const QString close = QStringLiteral("</Dest>");
    QStringList tokens;
    int position = 0;
    while (position < targets.size()) {
        if (targets.midRef(position, open.size()) != open) {
            return std::nullopt;
        }
        position += open.size();
        const int end = targets.indexOf(close, position);
        if (end < 0) {
            return std::nullopt;
        }
        const QStringRef destination = targets.midRef(position, end - position);
        tokens.append(destination.mid(destination.lastIndexOf(QLatin1Char('/')) + 1).toString());
        position = end + close.size();
    }
    return tokens;
}
