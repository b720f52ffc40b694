#include "desk/ErrorWords.h"

#include <QCoreApplication>

#include <array>
#include <cstring>

namespace {

struct Words
{
    const char* code;
    const char* text;
};

constexpr std::array<Words, 22> words{{
    {"101", QT_TRANSLATE_NOOP("ErrorWords", "the server does not know how to do this")},
    {"102", QT_TRANSLATE_NOOP("ErrorWords", "the server did not understand the request")},
    {"201", QT_TRANSLATE_NOOP("ErrorWords", "the server does not know this camera")},
    {"202", QT_TRANSLATE_NOOP("ErrorWords", "the camera is offline")},
    {"205", QT_TRANSLATE_NOOP("ErrorWords", "the camera's sound does not work")},
    {"206", QT_TRANSLATE_NOOP("ErrorWords", "the speaker is offline")},
    {"301", QT_TRANSLATE_NOOP("ErrorWords", "the server cannot store it; is its disk full?")},
    {"401", QT_TRANSLATE_NOOP("ErrorWords", "the speaker is not there any more")},
    {"402", QT_TRANSLATE_NOOP("ErrorWords", "the audio file is not there any more")},
    {"403", QT_TRANSLATE_NOOP("ErrorWords", "the group is not there any more")},
    {"404", QT_TRANSLATE_NOOP("ErrorWords", "the schedule is not there any more")},
    {"411", QT_TRANSLATE_NOOP("ErrorWords", "the name is not allowed")},
    {"412", QT_TRANSLATE_NOOP("ErrorWords", "the name is taken")},
    {"413", QT_TRANSLATE_NOOP("ErrorWords", "the address is no IP address and no host name")},
    {"414", QT_TRANSLATE_NOOP("ErrorWords", "the port is not 1 to 65535")},
    {"415", QT_TRANSLATE_NOOP("ErrorWords", "user name or password is too long")},
    {"416", QT_TRANSLATE_NOOP("ErrorWords", "a chosen entry is not there any more")},
    {"417", QT_TRANSLATE_NOOP("ErrorWords", "the times make no sense")},
    {"421", QT_TRANSLATE_NOOP("ErrorWords", "there is nothing to play on")},
    {"422", QT_TRANSLATE_NOOP("ErrorWords", "the audio file cannot be played")},
    {"-2", QT_TRANSLATE_NOOP("ErrorWords", "the server refuses the file")},
    {"", QT_TRANSLATE_NOOP("ErrorWords", "the server refuses it")},
}};

} // namespace

QString ErrorWords::of(const QString& code, const QString& detail)
{
    for (const Words& entry : words) {
        if (code == QLatin1String(entry.code) && (*entry.code != '\0' || detail.isEmpty())) {
            return QCoreApplication::translate("ErrorWords", entry.text);
        }
    }
    return detail.isEmpty() ? QCoreApplication::translate("ErrorWords", "error %1").arg(code) : detail;
}
