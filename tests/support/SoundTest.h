#pragma once

#include "system/ProgramEnd.h"

#include <QCoreApplication>
#include <QTest>

/** The main function of a test that plays or records in its own process. */
#define SOUND_TEST_MAIN(TestClass)                                                                           \
    static int runTest(int argc, char** argv)                                                                \
    {                                                                                                        \
        const QCoreApplication application(argc, argv);                                                      \
        TestClass test;                                                                                      \
        return QTest::qExec(&test, argc, argv);                                                              \
    }                                                                                                        \
    int main(int argc, char** argv)                                                                          \
    {                                                                                                        \
        endProgram(runTest(argc, argv));                                                                     \
    }
