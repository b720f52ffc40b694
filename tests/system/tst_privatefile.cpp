#include "system/PrivateFile.h"
#include "system/WholeFile.h"
#include "tests/support/FileReaders.h"
#include "tests/support/FullDisk.h"

#include <QTemporaryDir>
#include <QTest>

#ifndef _WIN32
#include <cerrno>

#include <sys/syscall.h>
#include <unistd.h>

namespace {

bool syncFails = false;
int synced = 0;

} // namespace

/** In the C library's place: some file systems find out only here that there is no room. */
extern "C" int fsync(int file)
{
    ++synced;
    if (syncFails) {
        errno = ENOSPC;
        return -1;
    }
    return static_cast<int>(syscall(SYS_fsync, file));
}
#endif

class TestPrivateFile : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void isWrittenWhole();
    void takesTheOtherOnesPlace();
    void cannotBeWritten();
    void fullDisk_data();
    void fullDisk();
    void fullDiskFoundAtTheEnd_data();
    void fullDiskFoundAtTheEnd();

private:
    static QByteArray contents(const QString& path)
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("cannot be read");
    }

    QTemporaryDir m_folder;
};

void TestPrivateFile::isWrittenWhole()
{
    const QString path = m_folder.filePath(QStringLiteral("schlüssel 鍵"));
    const QByteArray bytes("two\nlines\0and a null", 20);
    QVERIFY(writePrivateFile(path, bytes));
    QCOMPARE(contents(path), bytes);
    QVERIFY(FileReaders::isPrivate(path));
    QCOMPARE(QDir(m_folder.path()).entryList(QDir::Files).size(), 1);
}

void TestPrivateFile::takesTheOtherOnesPlace()
{
    const QString path = m_folder.filePath(QStringLiteral("users"));
    QFile open(path);
    QVERIFY(open.open(QIODevice::WriteOnly));
    open.write("a longer text than the new one");
    open.close();
    QVERIFY(open.setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ReadGroup |
                                QFileDevice::ReadOther));
    QVERIFY(!FileReaders::isPrivate(path));
    QVERIFY(writePrivateFile(path, "new"));
    QCOMPARE(contents(path), QByteArray("new"));
    QVERIFY(FileReaders::isPrivate(path));
    QVERIFY(writePrivateFile(path, QByteArray()));
    QCOMPARE(contents(path), QByteArray());
}

void TestPrivateFile::cannotBeWritten()
{
    QVERIFY(!writePrivateFile(m_folder.filePath(QStringLiteral("no/such/folder")), "x"));
    const QString folder = m_folder.filePath(QStringLiteral("folder"));
    QVERIFY(QDir().mkpath(folder + QStringLiteral("/inside")));
    QVERIFY(!writePrivateFile(folder, "x"));
    QVERIFY(QFileInfo(folder).isDir());
}

void TestPrivateFile::fullDisk_data()
{
    QTest::addColumn<bool>("isPrivate");
    QTest::addColumn<int>("room");
    for (const bool isPrivate : {true, false}) {
        const QByteArray kind = isPrivate ? "private" : "whole";
        QTest::addRow("%s file, no room", kind.constData()) << isPrivate << 0;
        QTest::addRow("%s file, too little room", kind.constData()) << isPrivate << 100;
    }
}

void TestPrivateFile::fullDisk()
{
    if (!FullDisk::possible) {
        QSKIP("Needs a limit of a file's size.");
    }
    QFETCH(bool, isPrivate);
    QFETCH(int, room);
    const auto write = [&](const QString& path, QString* error) {
        const QByteArray bytes(103, 'n'); // less than any buffer
        const FullDisk disk(static_cast<unsigned long>(room));
        return isPrivate ? writePrivateFile(path, bytes, error) : writeWholeFile(path, bytes, error);
    };
    const QString folder = m_folder.filePath(QString::fromLatin1(QTest::currentDataTag()));
    QVERIFY(QDir().mkpath(folder));
    const QString older = QDir(folder).filePath(QStringLiteral("older"));
    QVERIFY(writePrivateFile(older, "old"));
    QString error;
    QVERIFY(!write(older, &error));
    QVERIFY(!error.isEmpty());
    QCOMPARE(contents(older), QByteArray("old"));
    QVERIFY(!write(QDir(folder).filePath(QStringLiteral("new")), nullptr));
    QCOMPARE(QDir(folder).entryList(QDir::Files), QStringList{"older"});
}

void TestPrivateFile::fullDiskFoundAtTheEnd_data()
{
    QTest::addColumn<bool>("isPrivate");
    QTest::newRow("private file") << true;
    QTest::newRow("whole file") << false;
}

void TestPrivateFile::fullDiskFoundAtTheEnd()
{
#ifdef _WIN32
    QSKIP("Needs a system whose calls a program can replace.");
#else
    QFETCH(bool, isPrivate);
    const QString folder = m_folder.filePath(QString::fromLatin1(QTest::currentDataTag()));
    QVERIFY(QDir().mkpath(folder));
    const QString path = QDir(folder).filePath(QStringLiteral("users"));
    const auto write = [&](const QByteArray& bytes, QString* error) {
        return isPrivate ? writePrivateFile(path, bytes, error) : writeWholeFile(path, bytes, error);
    };
    synced = 0;
    QVERIFY(write("old", nullptr));
    QCOMPARE(synced, 1); // before it has its name
    syncFails = true;
    QString error;
    const bool written = write("new", &error);
    syncFails = false;
    QVERIFY(!written);
    QCOMPARE(error, qt_error_string(ENOSPC));
    QCOMPARE(contents(path), QByteArray("old"));
    QCOMPARE(QDir(folder).entryList(QDir::Files), QStringList{"users"});
#endif
}

QTEST_GUILESS_MAIN(TestPrivateFile)
#include "tst_privatefile.moc"
