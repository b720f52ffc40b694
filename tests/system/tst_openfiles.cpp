#include "system/OpenFiles.h"

#include <QtTest>

#ifndef _WIN32
#include <sys/resource.h>
#endif

class TestOpenFiles : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void raises();
};

void TestOpenFiles::raises()
{
#ifdef _WIN32
    OpenFiles::raiseLimit();
    QVERIFY(OpenFiles::limit() > 0);
#else
    rlimit files{};
    QCOMPARE(getrlimit(RLIMIT_NOFILE, &files), 0);
    files.rlim_max = std::min<rlim_t>(files.rlim_max, 4096); // only lower is allowed
    files.rlim_cur = 256;
    QCOMPARE(setrlimit(RLIMIT_NOFILE, &files), 0);
    QCOMPARE(OpenFiles::limit(), 256);
    OpenFiles::raiseLimit();
    QCOMPARE(OpenFiles::limit(), static_cast<int>(files.rlim_max));
#endif
}

QTEST_GUILESS_MAIN(TestOpenFiles)
#include "tst_openfiles.moc"
