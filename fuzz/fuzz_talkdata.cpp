// Any text as the targets of a talk packet: the tokens taken out of it give the same text again.

#include "server/talks/TalkDestinations.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QString targets = QString::fromUtf8(reinterpret_cast<const char*>(data), static_cast<int>(size));
    const auto tokens = parseTalkDestinations(targets);
    if (!tokens) {
        return 0;
    }
    int length = 0;
    for (const QString& token : *tokens) {
        if (!targets.contains(token + QStringLiteral("</Dest>"))) {
            std::abort();
        }
        length += token.size() + 13;
    }
    if (length > targets.size()) {
        std::abort();
    }
    return 0;
}
