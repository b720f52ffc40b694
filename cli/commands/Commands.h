#pragma once

#include <QStringList>

/** The commands of voicedesk that speak to a server; each takes its arguments, the name first. */
int runDevices(const QStringList& words);
int runFiles(const QStringList& words);
int runGroups(const QStringList& words);
int runSchedules(const QStringList& words);
int runPlay(const QStringList& words);
int runStop(const QStringList& words);
int runSay(const QStringList& words);
int runServe(const QStringList& words);
