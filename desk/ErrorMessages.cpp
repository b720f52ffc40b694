#include "desk/ErrorMessages.h"

#include "protocol/ReturnCode.h"

#include <QCoreApplication>

#include <algorithm>
#include <iterator>

namespace {

struct Message
{
    const QString* code;
    const char* text;
};

/** One for each code but success. */
const Message messages[] = {
    {&ReturnCode::unknownCommand,
     QT_TRANSLATE_NOOP("ErrorMessages", "the server does not know how to do this")},
    {&ReturnCode::malformedRequest,
     QT_TRANSLATE_NOOP("ErrorMessages", "the server did not understand the request")},
    {&ReturnCode::noSuchCamera, QT_TRANSLATE_NOOP("ErrorMessages", "the server does not know this camera")},
    {&ReturnCode::cameraOffline, QT_TRANSLATE_NOOP("ErrorMessages", "the camera is offline")},
    {&ReturnCode::noSuchTalk, QT_TRANSLATE_NOOP("ErrorMessages", "the server does not know this talk")},
    {&ReturnCode::badTalkPacket,
     QT_TRANSLATE_NOOP("ErrorMessages", "the server cannot read the sound of the microphone")},
    {&ReturnCode::noVoice, QT_TRANSLATE_NOOP("ErrorMessages", "the camera's sound does not work")},
    {&ReturnCode::speakerOffline, QT_TRANSLATE_NOOP("ErrorMessages", "the speaker is offline")},
    {&ReturnCode::loginRefused,
     QT_TRANSLATE_NOOP("ErrorMessages", "the camera refuses the user name or the password")},
    {&ReturnCode::noLoudspeaker, QT_TRANSLATE_NOOP("ErrorMessages", "the camera has no loudspeaker")},
    {&ReturnCode::cameraBusy, QT_TRANSLATE_NOOP("ErrorMessages", "the camera is busy with others")},
    {&ReturnCode::cameraTimedOut, QT_TRANSLATE_NOOP("ErrorMessages", "the camera did not answer in time")},
    {&ReturnCode::talkRefused, QT_TRANSLATE_NOOP("ErrorMessages", "the camera refuses the talk")},
    {&ReturnCode::noTalkToken,
     QT_TRANSLATE_NOOP("ErrorMessages", "the server does not say which talk it has opened")},
    {&ReturnCode::noPicture, QT_TRANSLATE_NOOP("ErrorMessages", "the camera gives no picture")},
    {&ReturnCode::storageFailed,
     QT_TRANSLATE_NOOP("ErrorMessages", "the server cannot store it; is its disk full?")},
    {&ReturnCode::noSuchDevice, QT_TRANSLATE_NOOP("ErrorMessages", "the speaker is not there any more")},
    {&ReturnCode::noSuchFile, QT_TRANSLATE_NOOP("ErrorMessages", "the audio file is not there any more")},
    {&ReturnCode::noSuchGroup, QT_TRANSLATE_NOOP("ErrorMessages", "the group is not there any more")},
    {&ReturnCode::noSuchSchedule, QT_TRANSLATE_NOOP("ErrorMessages", "the schedule is not there any more")},
    {&ReturnCode::badName, QT_TRANSLATE_NOOP("ErrorMessages", "the name is not allowed")},
    {&ReturnCode::nameTaken, QT_TRANSLATE_NOOP("ErrorMessages", "the name is taken")},
    {&ReturnCode::badAddress,
     QT_TRANSLATE_NOOP("ErrorMessages", "the address is neither an IP address nor a host name")},
    {&ReturnCode::badPort, QT_TRANSLATE_NOOP("ErrorMessages", "the port is not 1 to 65535")},
    {&ReturnCode::badCredentials, QT_TRANSLATE_NOOP("ErrorMessages", "user name or password is too long")},
    {&ReturnCode::badList, QT_TRANSLATE_NOOP("ErrorMessages", "a chosen entry is not there any more")},
    {&ReturnCode::badSchedule, QT_TRANSLATE_NOOP("ErrorMessages", "the times make no sense")},
    {&ReturnCode::badCameraKind,
     QT_TRANSLATE_NOOP("ErrorMessages", "the server has no cameras of this kind")},
    {&ReturnCode::tooManyRecords,
     QT_TRANSLATE_NOOP("ErrorMessages", "the server keeps no more entries of this kind")},
    {&ReturnCode::badCameraSettings,
     QT_TRANSLATE_NOOP("ErrorMessages", "a setting of the camera is not allowed")},
    {&ReturnCode::tooManyRequests,
     QT_TRANSLATE_NOOP("ErrorMessages", "the server is busy with other requests; try again")},
    {&ReturnCode::nothingToPlayOn, QT_TRANSLATE_NOOP("ErrorMessages", "there is nothing to play on")},
    {&ReturnCode::brokenFile, QT_TRANSLATE_NOOP("ErrorMessages", "the audio file cannot be played")},
    {&ReturnCode::playbackStopped, QT_TRANSLATE_NOOP("ErrorMessages", "the playback was stopped")},
    {&ReturnCode::speakerTaken, QT_TRANSLATE_NOOP("ErrorMessages", "another playback has taken the speaker")},
    {&ReturnCode::fileRefused, QT_TRANSLATE_NOOP("ErrorMessages", "the server refuses the file")},
};

/** The entry of a code; null when it has none. */
const Message* find(const QString& code)
{
    const auto* entry = std::find_if(std::begin(messages), std::end(messages),
                                     [&](const Message& each) { return *each.code == code; });
    return entry == std::end(messages) ? nullptr : entry;
}

} // namespace

QString ErrorMessages::shortened(const QString& text)
{
    constexpr int longest = 200; // characters
    const QString words = text.simplified();
    return words.size() > longest ? words.left(longest) + QChar(0x2026) : words;
}

QString ErrorMessages::of(const QString& code, const QString& detail)
{
    if (const Message* entry = find(code)) {
        return QCoreApplication::translate("ErrorMessages", entry->text);
    }
    if (QString words = shortened(detail); !words.isEmpty()) {
        return words;
    }
    return code.isEmpty() ? QCoreApplication::translate("ErrorMessages", "the server refuses it")
                          : QCoreApplication::translate("ErrorMessages", "error %1").arg(code);
}

QString ErrorMessages::withDetail(const QString& code, const QString& detail)
{
    const Message* entry = find(code);
    const QString words = shortened(detail);
    // The server's texts are English, so the same words may be here in another language.
    if (words.isEmpty() || entry == nullptr || words == QLatin1String(entry->text)) {
        return of(code, detail);
    }
    return QCoreApplication::translate("ErrorMessages", "%1 (the server: %2)").arg(of(code), words);
}

QString ErrorMessages::serversWords(const QString& detail)
{
    const QString words = shortened(detail);
    return words.isEmpty() ? words
                           : QCoreApplication::translate("ErrorMessages", "the server says: %1").arg(words);
}
