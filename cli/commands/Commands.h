#pragma once

#include <QStringList>

/**
 * @file
 * The commands of voicedesk that use a server. Each takes its arguments, the command's name first, and
 * returns an ExitStatus.
 */

int runDevices(const QStringList& words);   ///< Lists and changes IP audio devices.
int runFiles(const QStringList& words);     ///< Lists, uploads and deletes audio files.
int runGroups(const QStringList& words);    ///< Lists and changes groups.
int runSchedules(const QStringList& words); ///< Lists and changes schedules.
int runPlay(const QStringList& words);      ///< Plays an audio file on a device or group.
int runStop(const QStringList& words);      ///< Stops a playback.
int runSay(const QStringList& words);       ///< Talks to IP audio devices.
int runServe(const QStringList& words);     ///< Runs a server for other processes.
