#include "FileReaders.h"
#include "PrivateFile.h"

#include <QTemporaryDir>
#include <QTest>

class TestPrivateFile : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void isWrittenWhole();
    void takesTheOtherOnesPlace();
    void cannotBeWritten();

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

QTEST_GUILESS_MAIN(TestPrivateFile)
#include "tst_privatefile.moc"
