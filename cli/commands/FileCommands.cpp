#include "cli/RecordFinder.h"
#include "cli/commands/Commands.h"
#include "cli/commands/FileUpload.h"
#include "cli/commands/RecordChange.h"
#include "cli/commands/Table.h"
#include "src/vocabulary/AudioStatus.h"

#include <cstdio>

namespace {

constexpr double msPerSecond = 1000.0;

QString statusText(int status)
{
    switch (static_cast<AudioStatus>(status)) {
    case AudioStatus::Uploading:
        return QStringLiteral("uploading");
    case AudioStatus::Ready:
        return QStringLiteral("ready");
    case AudioStatus::RefusedWithOutput:
    case AudioStatus::RefusedWithoutOutput:
        return QStringLiteral("refused");
    default:
        return QStringLiteral("unknown");
    }
}

int listFiles(const CommandArguments& arguments)
{
    PluginSession session(arguments.client());
    ExitStatus status = session.open();
    status = status == ExitSuccess ? session.readFiles() : status;
    if (status != ExitSuccess) {
        return status;
    }
    Table table({{"id", "id"}, {"name", "name"}, {"seconds", "seconds"}, {"status", "status"}});
    const QList<AudioFileRow> files = session.plugin().audioFiles();
    for (const AudioFileRow& file : files) {
        table.add({file.id, file.name, file.length / msPerSecond, statusText(file.status)});
    }
    std::fputs(qUtf8Printable(table.text(arguments.json())), stdout);
    return ExitSuccess;
}

int addFile(const CommandArguments& arguments)
{
    if (!isUploadable(arguments.word(0))) {
        return ExitUsage;
    }
    PluginSession session(arguments.client());
    if (const ExitStatus status = session.open(); status != ExitSuccess) {
        return status;
    }
    int id = 0;
    const ExitStatus status = uploadFile(session, arguments.word(0), &id);
    return status == ExitSuccess ? printId(arguments, "added file", id) : static_cast<int>(status);
}

int deleteFile(const CommandArguments& arguments)
{
    PluginSession session(arguments.client());
    if (const ExitStatus status = session.open(); status != ExitSuccess) {
        return status;
    }
    RecordFinder finder(session);
    const auto id = finder.find(RecordFinder::File, arguments.word(0));
    if (!id) {
        return finder.status();
    }
    const ExitStatus status =
        session.receive(session.send([&](PluginClient& plugin) { plugin.deleteAudioFile(*id); }));
    return status == ExitSuccess ? printId(arguments, "deleted file", *id) : static_cast<int>(status);
}

} // namespace

std::vector<Command> fileCommands()
{
    return {
        {"files list",
         "",
         "list the audio files on the server",
         "",
         {jsonOption},
         Command::Server,
         listFiles},
        {"files add", "FILE", "send an audio file to the server", "", {jsonOption}, Command::Server, addFile},
        {"files delete", "ID", "delete an audio file", "", {jsonOption}, Command::Server, deleteFile},
    };
}
