#pragma once

#include "platform/PluginBase.h"
#include "src/FrameSmithWrapper.h"
#include "src/VoiceDeskExport.h"
#include "src/playback/AudioRenderer.h"

#include <QList>
#include <QMap>
#include <QSharedPointer>
#include <QStandardItemModel>
#include <QStringList>
#include <QUrl>
#include <QVariant>

#include <functional>

class RowsById;

/**
 * The plug-in: the one object between the client's front end, its host framework and the recording server.
 *
 *   front end (QML) -- invokables --> [requests] -- SendCommand --> host --> server
 *   front end (QML) <--- signals --- [handlers] <-- CommandProcessor, EventProcessor -- host <-- server
 *   microphone -- audioCaptured --> handleAudioCapture -- TalkData --> server
 *   server -- AudioReceived --> handleAudioReceived --> AudioRenderer --> loudspeaker
 *
 * Requests stand in PluginVoiceDesk_Reqs.cpp; the talk, devices, files, groups and schedules each have a file
 * PluginVoiceDesk_*.cpp of their own for what comes back. A request
 * checks nothing and changes nothing locally: a true result says only that the host accepted the command.
 * Handlers change state on the return code "0" alone, and answer with a signal.
 *
 * Everything runs on the thread that created the object; no field is locked. The order of the signals, the
 * slot, the invokables and the properties is that of the meta-object, which callers may index: append only.
 */
class VOICEDESK_EXPORT PluginVoiceDesk : public PluginBase
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID PLUGINBASE_IID FILE "VoiceDesk.json")
    Q_INTERFACES(PluginBase)

    /** Whether a microphone is present. Watched once a second on Windows; false elsewhere. */
    Q_PROPERTY(bool audioInDevAvailable READ audioInDevAvailable NOTIFY audioInDevAvailableChanged)
    /** Whether at least one talk target is open. */
    Q_PROPERTY(bool talking READ talking NOTIFY talkingChanged)
    /** The audio files on the server. */
    Q_PROPERTY(QVariantList audioFileList READ audioFileList NOTIFY audioFileListChanged)

public:
    PluginVoiceDesk();
    ~PluginVoiceDesk() override;

    // What the host calls; see PluginBase.
    bool InitialPluginBase(QQmlContext* context, void* pluginHandle,
                           FrameworkWrapperBase* framework) override;
    void EventProcessor(QString event, qint64, int, int, QVariant payload, const QString&) override;
    void EventProcessorEx(QString event, ConfigBase* config, qint64, int, int, QVariant payload,
                          const QString&) override;
    void CommandProcessor(QString command, QVariant result, void* userData, QString returnCode,
                          QString errorCode, bool flag, const QString& extra) override;
    void CommandProcessorEx(QString command, ConfigBase* config, QVariant result, void* userData,
                            QString returnCode, QString errorCode, bool flag, const QString& extra) override;
    bool Init(QQmlContext* context) override;
    void PluginServerConnected() override;

    /** Traces only; called by nothing in the plug-in. */
    void ErrorProcessor(QString command, void* userData, QString errorCode);

    // Not inline, so that the library exports them.
    bool audioInDevAvailable() const;
    bool talking() const;
    QVariantList audioFileList() const;

    /** A copy of the open talk targets, one QVariantMap each, in the order of the replies. */
    QList<QVariant> getTalkTargetList() const;

    /** Swaps the open talk targets with @p targets; `talking` stays as it is. */
    void setTalkTargetList(QList<QVariant>& targets);

    /** Replaces the capture object and drops the reference to the old one. */
    void setFrameSmithWrapper(const QSharedPointer<FrameSmithWrapper>& wrapper);

    /**
     * Duration of a sound file as the media back end tells it, in ms; 0 when it does not within 5 seconds.
     * Serves other events while it waits.
     */
    int getMediaDuration(const QString& path);

    /** For tests: writes the `talking` flag and emits nothing. */
    void tst_setTalking(bool talking);

Q_SIGNALS:
    void audioInDevAvailableChanged();
    void talkingChanged();
    void audioFileListChanged();
    void startTalkResponse(bool success);
    void startTalkToIPAudioResponse(bool success, const QString& returnCode, int ipAudioId);
    void ipAudioModelChanged();
    void addIPAudioResponse(bool success, const QString& returnCode, int ipAudioId);
    void updateIPAudioResponse(bool success, const QString& returnCode, int ipAudioId);
    void deleteIPAudioResponse(bool success, const QString& returnCode, int ipAudioId);
    void talkDisconnected();
    void playAudioResponse(bool success, int progress, const QString& errorCode, int ipAudioId);
    void stopCurrentAudioResponse();
    void playAudioError(const QString& ipAudioName, const QString& audioFileName, const QString& errorCode,
                        const QString& alarmName);
    void addNetworkAudioGroupResponse(bool success, const QString& returnCode, int groupId);
    void updateNetworkAudioGroupResponse(bool success, const QString& returnCode, int groupId);
    void deleteNetworkAudioGroupResponse(bool success, const QString& returnCode, int groupId);
    void addNetworkAudioScheduleResponse(bool success, const QString& returnCode, int scheduleId);
    void updateNetworkAudioScheduleResponse(bool success, const QString& returnCode, int scheduleId);
    void deleteNetworkAudioScheduleResponse(bool success, const QString& returnCode, int scheduleId);

protected Q_SLOTS:
    void handleAudioCapture(DWORD type, QByteArray dataBuffer);

public:
    /** Microphone level, limited to 0 to 100; kept for the next capture. */
    Q_INVOKABLE void setMicVolume(int volume);
    /** Microphone mute; kept for the next capture. */
    Q_INVOKABLE void setMicMute(bool mute);
    /** Starts the microphone and asks the server for a talk to a camera. */
    Q_INVOKABLE bool startTalk(const QString& camId, const QString& relayPath);
    /** Asks the server for a talk to an IP audio device; the caller starts the microphone itself. */
    Q_INVOKABLE bool startTalkToIPAudio(int ipAudioId);
    /** Ends the whole talk, all targets included. Always true. */
    Q_INVOKABLE bool stopTalk();
    /** Asks the server to close the talk to one IP audio device. */
    Q_INVOKABLE bool stopTalkToIPAudio(int ipAudioId);
    Q_INVOKABLE bool addIPAudio(const QString& deviceName, const QString& ip, int port,
                                const QString& username, const QString& password,
                                const QStringList& bindingCameraList);
    Q_INVOKABLE bool updateIPAudio(int ipAudioId, const QString& deviceName, const QString& ip, int port,
                                   const QString& username, const QString& password,
                                   const QStringList& bindingCameraList);
    /** Starts the microphone. */
    Q_INVOKABLE bool startAudioCapture();
    /** Stops the microphone. */
    Q_INVOKABLE void stopAudioCapture();
    Q_INVOKABLE bool deleteIPAudio(int ipAudioId);
    /** Asks the server for the list of IP audio devices. */
    Q_INVOKABLE void retrieveIPAudioModel();
    Q_INVOKABLE QObject* getIPAudioModel(QObject* parent) const;
    Q_INVOKABLE QObject* getNetworkAudioGroupModel(QObject* parent) const;
    Q_INVOKABLE QObject* getNetworkAudioScheduleModel(QObject* parent) const;
    Q_INVOKABLE void playAudio(int ipAudioId, int audioFileId);
    Q_INVOKABLE void playGroupAudio(int networkAudioGroupId, int audioFileId);
    Q_INVOKABLE void stopCurrentAudio(int ipAudioId);
    Q_INVOKABLE void stopCurrentGroupAudio(int networkAudioGroupId);
    Q_INVOKABLE bool uploadFile(const QUrl& fileUrl);
    Q_INVOKABLE void deleteAudioFile(int audioID);
    Q_INVOKABLE QVariantMap queryBindingIPAudio(const QString& nodeId);
    Q_INVOKABLE void getNetworkAudioGroup();
    Q_INVOKABLE bool addNetworkAudioGroup(const QString& groupName, const QVariant& networkAudioIDList);
    Q_INVOKABLE bool updateNetworkAudioGroup(int id, const QString& groupName,
                                             const QVariant& networkAudioIDList);
    Q_INVOKABLE bool deleteNetworkAudioGroup(int id);
    Q_INVOKABLE bool addNetworkAudioSchedule(const QVariantMap& schedule);
    Q_INVOKABLE bool updateNetworkAudioSchedule(int id, const QVariantMap& schedule);
    Q_INVOKABLE bool deleteNetworkAudioSchedule(int id);
    Q_INVOKABLE void getNetworkAudioSchedule();

private:
    /** Serves the reply to one command: CommandProcessor's arguments without the command. */
    using CommandHandler = std::function<void(QVariant, void*, QString, QString, bool, const QString&)>;
    using FileHandler = void (PluginVoiceDesk::*)(QVariant, void*, QString);
    using ShortHandler = void (PluginVoiceDesk::*)(const QVariant&, const QString&);
    using FullHandler = void (PluginVoiceDesk::*)(QVariant, void*, QString, QString, bool, const QString&);

    void timerEvent(QTimerEvent* event) override;
    virtual bool isAudioDeviceAvailable();

    bool createModel(QSharedPointer<QStandardItemModel>& model, const QHash<int, QByteArray>& roleNames);
    void fillCommandHandlers();
    bool send(const QString& command, const QVariant& param, void* userData = nullptr);

    void setTalking(bool talking);
    void stopAllTalk();
    bool isTokenExists(const QString& token) const;
    bool isAudioIdExists(int id) const;
    void sendEncodeTalkData(char* encoded);

    void handleStartTalk(QVariant result, void* userData, QString returnCode, QString errorCode, bool,
                         const QString&);
    void handleStartTalkToIPAudio(QVariant result, void* userData, QString returnCode, QString errorCode,
                                  bool, const QString&);
    void handleStopTalk(QVariant result, void* userData, QString returnCode, QString errorCode, bool,
                        const QString&);
    void handleStopTalkToIPAudio(QVariant result, void* userData, QString returnCode, QString errorCode, bool,
                                 const QString&);
    void handleSendTalkData(QVariant result, void* userData, QString returnCode, QString errorCode, bool,
                            const QString&);
    void handleTalkDisconnected(const QVariant& payload);
    void handleAudioReceived(const QVariant& payload);

    void handlePlayAudioError(const QVariant& payload);

    void handleAddIPAudioData(QVariant result, void* userData, QString returnCode, QString errorCode, bool,
                              const QString&);
    void handleUpdateIPAudioData(QVariant result, void* userData, QString returnCode, QString errorCode, bool,
                                 const QString&);
    void handleDeleteIPAudioData(QVariant result, void* userData, QString returnCode, QString errorCode, bool,
                                 const QString&);
    void handleRetrieveIPAudioData(QVariant result, void* userData, QString returnCode, QString errorCode,
                                   bool, const QString&);
    void handleAudioFileList(QVariant result, void* userData, QString returnCode);
    void setAudioFileList(const QList<QVariant>& list);
    void handlePlayAudio(QVariant result, void* userData, QString returnCode, QString errorCode, bool,
                         const QString&);
    void handleStopCurrentAudio(QVariant result, void* userData, QString returnCode, QString errorCode, bool,
                                const QString&);

    static QVariantList toList(const QString& text);
    QVariantList getNetworkAudioName(const QVariantList& idList) const;
    QVariantList getNetworkAudioName(const QVariantList& idList, RowsById& devices) const;
    QStandardItem* makeGroupRow(QVariantMap record, RowsById& devices) const;
    void handleAddNetworkAudioGroup(const QVariant& result, const QString& returnCode);
    void handleUpdateNetworkAudioGroup(const QVariant& result, const QString& returnCode);
    void handleDeleteNetworkAudioGroup(const QVariant& result, const QString& returnCode);
    void handleGetNetworkAudioGroup(const QVariant& result, const QString& returnCode);

    static QStandardItem* makeScheduleRow(QVariantMap record);
    void handleAddNetworkAudioSchedule(const QVariant& result, const QString& returnCode);
    void handleUpdateNetworkAudioSchedule(const QVariant& result, const QString& returnCode);
    void handleDeleteNetworkAudioSchedule(const QVariant& result, const QString& returnCode);
    void handleGetNetworkAudioSchedule(const QVariant& result, const QString& returnCode);

    QMap<QString, CommandHandler> m_commandHandlers; ///< By command; filled by Init.
    QSharedPointer<FrameSmithWrapper> m_frameSmithWrapper;
    QSharedPointer<QStandardItemModel> m_ipAudioModel;
    QSharedPointer<QStandardItemModel> m_networkAudioGroupModel;
    QSharedPointer<QStandardItemModel> m_networkAudioScheduleModel;
    QList<QVariant> m_talkTargetList; ///< The open talk targets, a QVariantMap each.
    bool m_talkingFlag = false;
    bool m_audioInDevFlag = false;
    quint32 m_talkSequence = 0; ///< Number of the last TalkData since the last request of a talk.
    AudioRenderer m_audioRenderer;
    QList<QVariant> m_audioFiles; ///< The audio files on the server, a QVariantMap each.
    int m_uploadAudioId = 0;      ///< Provisional id of the last upload; only ever decremented.
};
