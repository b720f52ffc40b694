#pragma once

#include <QString>

class CommandArguments;
class QEventLoop;
class QUrl;

/** What the commands that find cameras and ask them have in common. */
namespace CameraSearch {

inline constexpr int serverTime = 12 * 1000; ///< ms that a server has to search, or to ask a camera.

/** Returns whether a command is for a server: another one, or one inside this program with its records. */
bool isForServer(const CommandArguments& arguments);

/** Runs a loop to its end, or to Ctrl-C, and returns whether it was the former. */
bool runLoop(QEventLoop& loop);

/** Returns an address without any character that could command a terminal. */
QString textOf(const QUrl& address);

} // namespace CameraSearch
