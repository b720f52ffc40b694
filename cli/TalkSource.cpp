#include "cli/TalkSource.h"

#include "cli/PluginSession.h"
#include "system/EnvironmentVariable.h"
#include "system/MediaFiles.h"

namespace {

constexpr double maxTalkSeconds = 86400; // s
constexpr double fileTail = 0.3;         // s; lets the last packets of a file out

} // namespace

std::vector<CommandOption> TalkSource::options()
{
    return {
        {"source", "FILE", "Sound file that speaks in the microphone's place.", ""},
        {"mic", nullptr, "Use the default microphone.", ""},
        {"microphone", "NAME", "Use the microphone of this name; \"voicedesk microphones\" lists them.", ""},
        {"seconds", "N", "Length of the talk (default: the file's; with a microphone until Ctrl-C).", ""},
    };
}

std::optional<TalkSource> TalkSource::read(const CommandArguments& arguments, int* status)
{
    *status = ExitUsage;
    if (!arguments.onlyOne("source", "mic") || !arguments.onlyOne("source", "microphone")) {
        return std::nullopt;
    }
    TalkSource source;
    source.file = arguments.value("source");
    source.microphone = arguments.value("microphone");
    if (arguments.isSet("seconds")) {
        const auto seconds = arguments.numberBetween("seconds", 0, maxTalkSeconds);
        if (!seconds) {
            return std::nullopt;
        }
        source.seconds = *seconds;
    }
    if (!source.file.isEmpty()) {
        const double duration = MediaFiles::duration(source.file);
        if (duration < 0) {
            *status = PluginSession::fail(
                ExitMicrophoneFailed,
                QStringLiteral("%1 is not a sound file that can be read").arg(source.file));
            return std::nullopt;
        }
        source.seconds = source.seconds > 0 ? source.seconds : duration + fileTail;
    }
    return source;
}

void TalkSource::use() const
{
    if (file.isEmpty()) {
        qunsetenv("FRAMESMITH_CAPTURE_FILE"); // a microphone is meant
    } else {
        setEnvironmentVariable("FRAMESMITH_CAPTURE_FILE", file);
    }
    if (!microphone.isEmpty()) {
        setEnvironmentVariable("FRAMESMITH_CAPTURE_DEVICE", microphone);
    }
}
