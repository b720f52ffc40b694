#pragma once

#include "cli/TalkProgress.h"
#include "client/ExitStatus.h"
#include "client/PluginClient.h"
#include "client/PluginHost.h"
#include "client/measure/OutputRecorder.h"
#include "client/measure/TalkMonitor.h"
#include "embedded/EmbeddedLink.h"
#include "server/devices/simulated/SimulatedConfig.h"

#include <QTimer>

/** The options of `voicedesk talk`. */
struct TalkOptions
{
    QString pluginPath;        ///< Empty: found beside the program.
    QString cameraId;          ///< The camera to talk to.
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
 * A talk to one camera without a window, from the start to a report.
 *
 *   load plug-in --> record the output --> startTalk --> (reply) --> talk --> stopTalk --> TalkSummary
 */
class TalkCommand : public QObject
{
    Q_OBJECT

public:
    /** Makes the server and the host; run loads the plug-in. */
    explicit TalkCommand(TalkOptions options);

    /** Runs the talk in the application's event loop; returns an ExitStatus. */
    int run();

private:
    void startTalkResponse(bool success);
    void talkDisconnected();
    void prepare();
    void begin();
    bool prolongForTheCamera();
    void tick();
    void end(ExitStatus status, const QString& message);
    void printSummary();

    TalkOptions m_options;
    EmbeddedLink m_link;
    PluginHost m_host;
    PluginClient m_plugin;
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
