#pragma once

#include <QStringList>

/** The commands of voicedesk that speak to a server; each takes its arguments, the name first. */
int runDevices(const QStringList& arguments);
int runFiles(const QStringList& arguments);
int runGroups(const QStringList& arguments);
int runSchedules(const QStringList& arguments);
int runPlay(const QStringList& arguments);
int runStop(const QStringList& arguments);
int runSay(const QStringList& arguments);
int runServe(const QStringList& arguments);
