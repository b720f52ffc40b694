// Any file as the file of users: what was read is the same after it was written.

#include "server/access/UserStore.h"

#include <QFile>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdlib>

namespace {

QList<QByteArray> sortedLines(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        std::abort();
    }
    QList<QByteArray> lines = file.readAll().split('\n');
    std::sort(lines.begin(), lines.end());
    return lines;
}

/** Whether libsodium refuses or checks a hash at once: the file's own say how much time it may take. */
bool isCheap(const QByteArray& hash)
{
    return !hash.startsWith("$argon2") || hash.contains("$m=8,t=1,p=1$");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const QTemporaryDir folder;
    const QString first = folder.filePath(QStringLiteral("users"));
    const QString second = folder.filePath(QStringLiteral("again"));
    const QByteArray bytes(reinterpret_cast<const char*>(data), static_cast<int>(size));
    QFile file(first);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size()) {
        std::abort();
    }
    file.close();
    UserStore store;
    if (!store.load(first) || !store.save(first)) {
        std::abort();
    }
    UserStore again;
    if (!again.load(first) || !again.save(second)) {
        std::abort();
    }
    const QList<QByteArray> lines = sortedLines(first);
    // Qt ends a name at a zero byte, and leaves a byte order mark at its start out each time it reads one.
    if (!bytes.contains('\0') && !bytes.contains("\xEF\xBB\xBF") && lines != sortedLines(second)) {
        std::abort();
    }
    for (const QByteArray& line : lines) {
        if (line.startsWith("a ") && isCheap(line.mid(2))) {
            store.admits(QStringLiteral("a"), QStringLiteral("password"));
        }
    }
    return 0;
}
