#include "cli/PluginSession.h"
#include "cli/commands/CommandArguments.h"
#include "cli/commands/Commands.h"
#include "cli/commands/Table.h"
#include "protocol/AudioStatus.h"
#include "protocol/ReturnCode.h"
#include "protocol/Words.h"

#include <QFileInfo>
#include <QUrl>

#include <cstdio>

namespace {

constexpr int uploadTimeout = 120000; // ms

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
        return QStringLiteral("status %1").arg(status);
    }
}

int listFiles(PluginSession& session)
{
    Table table({{"id", "id"}, {"name", "name"}, {"seconds", "seconds"}, {"status", "status"}});
    const QList<AudioFileRow> files = session.plugin().audioFiles();
    for (const AudioFileRow& file : files) {
        table.add({file.id, file.name, file.length / 1000.0, statusText(file.status)});
    }
    std::fputs(qUtf8Printable(table.text(session.options().json)), stdout);
    return ExitSuccess;
}

int addFile(PluginSession& session, const QString& path)
{
    if (!QFileInfo(path).isFile()) {
        return PluginSession::fail(ExitUsage, QStringLiteral("%1 is no file").arg(path));
    }
    std::fprintf(stderr, "Reading %s ...\n", qUtf8Printable(path));
    session.forget();
    if (!session.plugin().uploadFile(QUrl::fromLocalFile(QFileInfo(path).absoluteFilePath()))) {
        return PluginSession::fail(ExitRefused, QStringLiteral("%1 cannot be read or sent").arg(path));
    }
    std::fprintf(stderr, "Uploading %lld bytes ...\n", static_cast<long long>(QFileInfo(path).size()));
    const QString code = session.waitForReply(Vocabulary::UploadFile, uploadTimeout);
    if (code.isEmpty()) {
        return PluginSession::fail(ExitNoAnswer, QStringLiteral("the server did not answer"));
    }
    if (code != ReturnCode::success) {
        return PluginSession::fail(ExitRefused,
                                   QStringLiteral("%1 (code %2)").arg(session.errorText(), code));
    }
    const QList<AudioFileRow> files = session.plugin().audioFiles();
    if (files.isEmpty() || files.last().id <= 0) {
        return PluginSession::fail(ExitRefused,
                                   QStringLiteral("the server has taken the file, but does not list it"));
    }
    std::printf("added file %d\n", files.last().id);
    return ExitSuccess;
}

int deleteFile(PluginSession& session, int id)
{
    session.forget();
    session.plugin().deleteAudioFile(id);
    const QString code = session.waitForReply(Vocabulary::DeleteFile);
    if (code.isEmpty()) {
        return PluginSession::fail(ExitNoAnswer, QStringLiteral("the server did not answer"));
    }
    if (code != ReturnCode::success) {
        return PluginSession::fail(ExitRefused,
                                   QStringLiteral("%1 (code %2)").arg(session.errorText(), code));
    }
    std::printf("deleted file %d\n", id);
    return ExitSuccess;
}

} // namespace

int runFiles(const QStringList& words)
{
    CommandArguments arguments(
        QStringLiteral("The audio files on the server.\n\n  list\n  add FILE\n  delete ID"));
    if (!arguments.read(words)) {
        return arguments.exitStatus();
    }
    const QString verb = arguments.word(0);
    const bool known = (verb == QLatin1String("list") && arguments.words() == 1) ||
                       (verb == QLatin1String("add") && arguments.words() == 2) ||
                       (verb == QLatin1String("delete") && arguments.words() == 2);
    if (!known) {
        return arguments.usage(QStringLiteral("files list, add FILE, or delete ID"));
    }
    const auto id =
        verb == QLatin1String("delete") ? arguments.number(arguments.word(1), "id") : std::optional(0);
    if (!id || *id < 0) {
        return ExitUsage;
    }
    PluginSession session(arguments.client());
    if (const ExitStatus status = session.open(); status != ExitSuccess) {
        return status;
    }
    if (session.waitForReply(Vocabulary::GetAudioFile).isEmpty()) {
        return PluginSession::fail(ExitNoAnswer, QStringLiteral("the server did not answer"));
    }
    if (verb == QLatin1String("list")) {
        return listFiles(session);
    }
    return verb == QLatin1String("add") ? addFile(session, arguments.word(1)) : deleteFile(session, *id);
}
