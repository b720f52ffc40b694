#include "fuzz/PrivateSound.h"

#include <QElapsedTimer>
#include <QFile>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QThread>

#include <cstdio>
#include <cstdlib>

#include <unistd.h>

namespace {

constexpr int startTimeout = 20000; // ms

// Interrupts end the fuzzer, and that ends the server. A step of the null sink is as long as its reader
// wants.
const char* const script = R"(
trap '' INT
env -u PULSE_SERVER HOME="$XDG_RUNTIME_DIR" pulseaudio --daemonize=no --exit-idle-time=-1 -n \
    --log-level=error --use-pid-file=no \
    -L 'module-null-sink sink_name=out rate=48000 norewinds=1' \
    -L "module-native-protocol-unix auth-anonymous=1 srbchannel=no socket=$XDG_RUNTIME_DIR/pulse.sock" </dev/null &
read end_of_the_fuzzer
kill $!
wait $!
rm -rf "$XDG_RUNTIME_DIR"
)";

} // namespace

bool PrivateSound::start()
{
    if (QStandardPaths::findExecutable(QStringLiteral("pulseaudio")).isEmpty()) {
        std::fputs("This fuzzer needs a sound server: install pulseaudio.\n", stderr);
        return false;
    }
    QTemporaryDir folder;
    folder.setAutoRemove(false); // the script does, also after a crash
    const QString socket = folder.filePath(QStringLiteral("pulse.sock"));
    qputenv("XDG_RUNTIME_DIR", folder.path().toUtf8());
    qputenv("PULSE_RUNTIME_PATH", folder.path().toUtf8());
    qputenv("PULSE_SERVER", "unix:" + socket.toUtf8());
    qputenv("PULSE_LATENCY_MSEC", "80"); // without it, seconds pass before the server asks for more
    qputenv("ALSA_CONFIG_PATH", "/dev/null");
    if (popen(script, "we") == nullptr) { // never closed: the process's end does that
        std::perror("The sound server does not start");
        return false;
    }
    QElapsedTimer clock;
    clock.start();
    while (!QFile::exists(socket)) {
        if (clock.elapsed() > startTimeout) {
            std::fputs("The sound server does not start.\n", stderr);
            return false;
        }
        QThread::msleep(10);
    }
    return true;
}

void PrivateSound::endWithoutDestructors()
{
    on_exit(
        [](int status, void*) {
            std::fflush(stdout);
            std::fflush(stderr);
            _exit(status);
        },
        nullptr);
}
