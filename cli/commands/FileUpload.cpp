#include "cli/commands/FileUpload.h"

#include <QFileInfo>
#include <QUrl>

#include <cstdio>

namespace {

constexpr int uploadTimeout = 120000; // ms

} // namespace

bool isUploadable(const QString& path)
{
    const QFileInfo info(path);
    if (info.isFile() && info.isReadable()) {
        return true;
    }
    PluginSession::fail(ExitUsage, QStringLiteral("%1 is not a file that can be read").arg(path));
    return false;
}

ExitStatus uploadFile(PluginSession& session, const QString& path, int* id)
{
    // The reply is the list of all files, which the plug-in shows from then on: the newest is the last.
    if (const ExitStatus status = session.readFiles(); status != ExitSuccess) {
        return status;
    }
    std::fprintf(stderr, "Reading %s ...\n", qUtf8Printable(path));
    const QFileInfo info(path);
    const quint64 request = session.send(
        [&](PluginClient& plugin) { plugin.uploadFile(QUrl::fromLocalFile(info.absoluteFilePath())); });
    if (request == 0 && !session.isLost()) {
        return PluginSession::fail(ExitRefused, QStringLiteral("%1 cannot be read or sent").arg(path));
    }
    std::fprintf(stderr, "Uploading %lld bytes ...\n", static_cast<long long>(info.size()));
    if (const ExitStatus status = session.receive(request, nullptr, uploadTimeout); status != ExitSuccess) {
        return status;
    }
    const QList<AudioFileRow> files = session.plugin().audioFiles();
    *id = files.isEmpty() ? 0 : files.last().id;
    return *id > 0 ? ExitSuccess
                   : PluginSession::fail(
                         ExitRefused, QStringLiteral("the server has taken the file, but does not list it"));
}
