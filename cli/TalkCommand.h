#pragma once

#include "cli/TalkProgress.h"
#include "client/ExitStatus.h"
#include "client/PluginHost.h"
#include "client/measure/OutputRecorder.h"
#include "client/measure/TalkMonitor.h"
#include "embedded/EmbeddedLink.h"
#include "server/devices/simulated/SimulatedConfig.h"

#include <QTimer>

/** What `voicedesk talk` was asked for. */
struct TalkOptions
{
    QString pluginPath; ///< Empty: found beside the program.
    QString cameraId;
    QString sourceFile;        ///< Speaks in the microphone's place; empty for a microphone.
    QString inputDevice;       ///< Name of the microphone; empty for the default one.
    double seconds = 0;        ///< Length of the talk; 0: as long as the file, or until interrupted.
    int volume = 50;           ///< Microphone volume, 0 to 100.
    int answerTimeout = 5000;  ///< Wait for the server's answer, ms.
    QString heardFile;         ///< What was heard goes there; empty: to a new file beside the recordings.
    ServerConfig server;       ///< But for its simulated devices.
    SimulatedConfig simulated; ///< Those devices.
};

/**
 * A headless talk to one camera, from the start to a closing summary.
 *
 *   load plug-in --> record the output --> startTalk --> (answer) --> talk for a while --> stopTalk -->
 * summary
 *
 * Uses the plug-in as the client's front end does: by its invokables and signals.
 */
class TalkCommand : public QObject
{
    Q_OBJECT

public:
    explicit TalkCommand(TalkOptions options);

    /** Runs the talk in the application's event loop; returns an ExitStatus. */
    int run();

private Q_SLOTS:
    void startTalkResponse(bool success);
    void talkDisconnected();

private:
    void prepare();
    void begin();
    bool prolongForTheCamera();
    void tick();
    void end(ExitStatus status, const QString& message);
    void printSummary();

    TalkOptions m_options;
    EmbeddedLink m_link;
    PluginHost m_host;
    TalkMonitor m_monitor;
    TalkProgress m_progress;
    OutputRecorder m_recorder;
    QTimer m_recorderTimer;
    QTimer m_answerTimer;
    QTimer m_ticker;
    QString m_refusal; ///< What the server said to StartTalk.
    bool m_began = false;
    bool m_talking = false;
    bool m_ended = false;
    ExitStatus m_status = ExitSuccess;
};
