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
 * Requests are in PluginVoiceDesk_Reqs.cpp; replies and events of the talk, devices, files, groups and
 * schedules are in a file PluginVoiceDesk_*.cpp each. A request does not check its arguments and does not
 * change the models. Its result true says only that the host accepted the command. It is false when the host
 * refused the command or when there is no host. There are no time-outs and no retries: a command that the
 * server never answers has no response signal.
 *
 * Reply handlers change the models on the return code "0" alone and emit a response signal, in which
 * `success` is whether the code was "0" and `returnCode` is the code as the server sent it. The one exception
 * is the reply with a full list of devices, groups or schedules, which clears its model first, whatever the
 * code. Rows are found by findRowById, so an id may find the row of an id that begins with it.
 *
 * Everything runs on the thread that created the object: invokables and the entry points of the host must be
 * called there, and all signals are emitted there. No field is locked. The order of the signals, the slot,
 * the invokables and the properties is that of the meta-object, which callers may index: append only.
 */
class VOICEDESK_EXPORT PluginVoiceDesk : public PluginBase
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID PLUGINBASE_IID FILE "VoiceDesk.json")
    Q_INTERFACES(PluginBase)

    /**
     * Whether a microphone is present. Polled once a second on Windows, and false until the first poll;
     * always false on other systems.
     */
    Q_PROPERTY(bool audioInDevAvailable READ audioInDevAvailable NOTIFY audioInDevAvailableChanged)
    /** Whether a talk is open: true from the first successful reply on, false when the talk is ended. */
    Q_PROPERTY(bool talking READ talking NOTIFY talkingChanged)
    /**
     * The audio files on the server, a QVariantMap each: "audioID" (int), "audioLength" (int, ms),
     * "audioName" (QString) and "audioStatus" (int), as the server sent them. An upload that the server has
     * not answered is an entry with a negative id, "audioStatus" 1 and a "guid" (QString). "audioStatus" 4 or
     * 5 there says that the server refused the file: 4 if this machine has a sound output, 5 if it has none.
     */
    Q_PROPERTY(QVariantList audioFileList READ audioFileList NOTIFY audioFileListChanged)

public:
    PluginVoiceDesk();

    /**
     * Sends StopTalk for each open target and emits nothing. Sends nothing when the object is destroyed after
     * the static objects of its library.
     */
    ~PluginVoiceDesk() override;

    // The host's calls; see PluginBase. Those of one of several servers are deliberately not served.
    // PluginServerConnected fetches the devices and the audio files, not the groups and schedules.
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

    /** Traces its call and does nothing else. Not called by the plug-in. */
    void ErrorProcessor(QString command, void* userData, QString errorCode);

    // Not inline, so that the library exports them.
    /** Returns the property audioInDevAvailable. */
    bool audioInDevAvailable() const;
    /** Returns the property talking. */
    bool talking() const;
    /** Returns a copy of the property audioFileList. */
    QVariantList audioFileList() const;

    /**
     * Returns a copy of the open talk targets, a QVariantMap each, in the order of the replies: "camId",
     * "talkToken" and "relayPath" (QString) for a camera, "deviceID" (int) and "talkToken" (QString) for an
     * IP audio device.
     */
    QList<QVariant> getTalkTargetList() const;

    /** Swaps the open talk targets with @p targets; `talking` stays as it is. */
    void setTalkTargetList(QList<QVariant>& targets);

    /** Replaces the capture object and drops the old one. Connects no signal of the new one. */
    void setFrameSmithWrapper(const QSharedPointer<FrameSmithWrapper>& wrapper);

    /**
     * Returns the duration of a sound file as the media back end reports it, in ms. Blocks for up to 5
     * seconds, and serves other events of the thread in that time. Returns 0 for a file that does not exist,
     * and when the back end knows no duration by then.
     */
    int getMediaDuration(const QString& path);

    /** For tests: writes the `talking` flag and emits nothing. */
    void tst_setTalking(bool talking);

Q_SIGNALS:
    /** Emitted when a poll found that the microphone has come or gone. If it has gone, the talk has ended. */
    void audioInDevAvailableChanged();
    /** Emitted when the property talking has changed, before the response signal of the same reply. */
    void talkingChanged();
    /** Emitted when the property audioFileList has changed, and by each deleteAudioFile of a negative id. */
    void audioFileListChanged();
    /** Emitted when the reply to StartTalk came. Not emitted when startTalk returned without sending. */
    void startTalkResponse(bool success);
    /**
     * Emitted when the reply to StartTalkToIPAudio came, and from inside startTalkToIPAudio when the device
     * was in the talk already.
     *
     * @param success    whether the device is in the talk
     * @param returnCode not the return code: the reply's text "error" if the server accepted the command and
     *                   the device could not be reached, empty in all other cases
     * @param ipAudioId  the id that was asked for
     */
    void startTalkToIPAudioResponse(bool success, const QString& returnCode, int ipAudioId);
    /** Emitted when a row of the device model was added, changed or removed, and after each full list. */
    void ipAudioModelChanged();
    /** Emitted when the reply to AddIPAudio came; @p ipAudioId is the new id, 0 if the reply has none. */
    void addIPAudioResponse(bool success, const QString& returnCode, int ipAudioId);
    /** Emitted when the reply to UpdateIPAudio came; @p ipAudioId is the reply's id, 0 if it has none. */
    void updateIPAudioResponse(bool success, const QString& returnCode, int ipAudioId);
    /** Emitted when the reply to DeleteIPAudio came; @p ipAudioId is the reply's id, 0 if it has none. */
    void deleteIPAudioResponse(bool success, const QString& returnCode, int ipAudioId);
    /** Emitted when the server reported the loss of an open target, after the whole talk was ended. */
    void talkDisconnected();
    /**
     * Emitted for each reply to PlayAudio or PlayGroupAudio; one command may have several.
     *
     * @param success   whether the return code is "0"
     * @param progress  as the server sent it; 0 if the reply has none
     * @param errorCode the reply's error text; may be empty
     * @param ipAudioId the device's id on a failure, 0 on a success
     */
    void playAudioResponse(bool success, int progress, const QString& errorCode, int ipAudioId);
    /** Emitted when StopCurrentAudio or StopCurrentGroupAudio succeeded. A failure has no signal. */
    void stopCurrentAudioResponse();
    /**
     * Emitted when the event PlayAudioFailed came: a playback failed after it was started. All texts are as
     * the server sent them, empty where the event has none.
     *
     * @param ipAudioName   the device's name
     * @param audioFileName the file's name
     * @param errorCode     the error text
     * @param alarmName     the name of the alarm that started the playback
     */
    void playAudioError(const QString& ipAudioName, const QString& audioFileName, const QString& errorCode,
                        const QString& alarmName);
    /** Emitted when the reply to AddNetworkAudioGroup came; @p groupId is the new id, 0 if the reply has
     * none. */
    void addNetworkAudioGroupResponse(bool success, const QString& returnCode, int groupId);
    /** Emitted when the reply to UpdateNetworkAudioGroup came; @p groupId is the reply's, 0 without one. */
    void updateNetworkAudioGroupResponse(bool success, const QString& returnCode, int groupId);
    /** Emitted when the reply to DeleteNetworkAudioGroup came; @p groupId is the reply's, 0 without one. */
    void deleteNetworkAudioGroupResponse(bool success, const QString& returnCode, int groupId);
    /** Emitted when the reply to AddNetworkAudioSchedule came; @p scheduleId is the new id, 0 without one. */
    void addNetworkAudioScheduleResponse(bool success, const QString& returnCode, int scheduleId);
    /** Emitted when the reply to UpdateNetworkAudioSchedule came; @p scheduleId is the reply's, 0 without
     * one. */
    void updateNetworkAudioScheduleResponse(bool success, const QString& returnCode, int scheduleId);
    /** Emitted when the reply to DeleteNetworkAudioSchedule came; @p scheduleId is the reply's, 0 without
     * one. */
    void deleteNetworkAudioScheduleResponse(bool success, const QString& returnCode, int scheduleId);

protected Q_SLOTS:
    /**
     * Sends a captured packet to all open targets as one TalkData: "targets" (QString, a "<Dest>" element for
     * each), "sequence" (quint32, from 1) and "talkData" (QString, the packet in Base64). Drops the packet
     * when no target is open or when the type is not G.711 mu-law. A packet that the host refuses is lost;
     * its number is not used again.
     *
     * @param type       a value of StreamType
     * @param dataBuffer the packet, header included
     */
    void handleAudioCapture(DWORD type, QByteArray dataBuffer);

public:
    /** Sets the microphone's level, limited to 0 to 100; kept for the next capture. */
    Q_INVOKABLE void setMicVolume(int volume);
    /** Mutes or unmutes the microphone; kept for the next capture. */
    Q_INVOKABLE void setMicMute(bool mute);
    /**
     * Starts the microphone and sends StartTalk: a map of "camId" and "relayPath" (QString).
     * startTalkResponse follows. While `talking` is true, nothing is sent and no signal follows.
     *
     * @return true when the command was sent or a talk is open; false when the microphone does not start or
     * the host refuses. The microphone keeps running after a refusal of the host.
     */
    Q_INVOKABLE bool startTalk(const QString& camId, const QString& relayPath);
    /**
     * Sends StartTalkToIPAudio: the id as an int. startTalkToIPAudioResponse follows, from inside the call if
     * the device is in the talk already. The numbers of the talk packets start again at 1. Does not start the
     * microphone: the caller calls startAudioCapture. A return code other than "0" stops it, also for other
     * targets.
     */
    Q_INVOKABLE bool startTalkToIPAudio(int ipAudioId);
    /**
     * Stops the microphone, sends StopTalk for each open target (a map of "talkToken" and "relayPath") and
     * removes all targets. Does nothing while `talking` is false, so it does not end a talk whose StartTalk
     * has no reply yet.
     *
     * @return always true
     */
    Q_INVOKABLE bool stopTalk();
    /**
     * Sends StopTalkToIPAudio: the id as an int. A reply "0" removes all targets, not only this one, and sets
     * `talking` to false. The microphone keeps running. A failure has no signal.
     */
    Q_INVOKABLE bool stopTalkToIPAudio(int ipAudioId);
    /**
     * Sends AddIPAudio: a map of "deviceName", "ip", "username", "password" (QString), "port" (int) and
     * "bindingCameraList" (QString, the ids joined with "|"). addIPAudioResponse follows.
     *
     * @param deviceName        the name to display
     * @param ip                the device's address
     * @param port              the device's port
     * @param username          login on the device; may be empty
     * @param password          password on the device, in clear text
     * @param bindingCameraList ids of the cameras that the device belongs to
     */
    Q_INVOKABLE bool addIPAudio(const QString& deviceName, const QString& ip, int port,
                                const QString& username, const QString& password,
                                const QStringList& bindingCameraList);
    /**
     * Sends UpdateIPAudio: the map of addIPAudio with "deviceID" (int). All fields are replaced.
     * updateIPAudioResponse follows, also with success for an id that the model does not have.
     */
    Q_INVOKABLE bool updateIPAudio(int ipAudioId, const QString& deviceName, const QString& ip, int port,
                                   const QString& username, const QString& password,
                                   const QStringList& bindingCameraList);
    /** Starts the microphone. Returns true when it runs, also if it ran before. */
    Q_INVOKABLE bool startAudioCapture();
    /** Stops the microphone. */
    Q_INVOKABLE void stopAudioCapture();
    /**
     * Sends DeleteIPAudio: the id as an int. deleteIPAudioResponse follows. Groups and schedules keep the id
     * until they are fetched again.
     */
    Q_INVOKABLE bool deleteIPAudio(int ipAudioId);
    /**
     * Sends RetrieveIPAudioModel without a payload. The reply replaces all rows of the device model;
     * ipAudioModelChanged follows. A failed reply leaves the model empty.
     */
    Q_INVOKABLE void retrieveIPAudioModel();
    /**
     * Makes a proxy of the device model, with the roles of IPAudioRole, sorted by name. A filter text set on
     * it is compared with the names, in either case.
     *
     * @param parent owns the proxy; without one the caller does
     * @return a new QSortFilterProxyModel at each call
     */
    Q_INVOKABLE QObject* getIPAudioModel(QObject* parent) const;
    /**
     * Makes a proxy of the group model, with the roles of NetworkAudioGroupRole, sorted by name.
     *
     * @param parent owns the proxy; without one the caller does
     * @return a new NetworkAudioGroupTreeSortFilterModel at each call
     */
    Q_INVOKABLE QObject* getNetworkAudioGroupModel(QObject* parent) const;
    /**
     * Makes a proxy of the schedule model, with the roles of NetworkAudioScheduleRole, sorted by name.
     *
     * @param parent owns the proxy; without one the caller does
     * @return a new QSortFilterProxyModel at each call
     */
    Q_INVOKABLE QObject* getNetworkAudioScheduleModel(QObject* parent) const;
    /**
     * Sends PlayAudio: a map of "ipAudioId", "audioFileId" and "ipAudioStatus" (int, always 1).
     * playAudioResponse follows each reply. A command that the host refuses is not reported.
     */
    Q_INVOKABLE void playAudio(int ipAudioId, int audioFileId);
    /**
     * Sends PlayGroupAudio: a map of "groupID" and "audioFileId" (int). playAudioResponse follows each reply.
     * A command that the host refuses is not reported.
     */
    Q_INVOKABLE void playGroupAudio(int networkAudioGroupId, int audioFileId);
    /** Sends StopCurrentAudio: the id as an int. stopCurrentAudioResponse follows if it succeeds. */
    Q_INVOKABLE void stopCurrentAudio(int ipAudioId);
    /** Sends StopCurrentGroupAudio: the id as an int. stopCurrentAudioResponse follows if it succeeds. */
    Q_INVOKABLE void stopCurrentGroupAudio(int networkAudioGroupId);
    /**
     * Sends UploadFile: a map of "content" (QByteArray, the whole file in Base64), "filename" (QString) and
     * "length" (int, ms; 0 if not known). Adds an entry with a negative id to audioFileList. The reply "0"
     * replaces the list; the reply "-2" changes "audioStatus" of the entry; other codes leave it.
     *
     * Blocks for up to 5 seconds for the file's duration and serves other events of the thread in that time.
     * The size of the file is not limited; the file and its Base64 text are in memory at once.
     *
     * @param fileUrl a local file
     * @return false when the file does not open, the host refuses, or the plug-in was destroyed during the
     * wait; audioFileList is then unchanged
     */
    Q_INVOKABLE bool uploadFile(const QUrl& fileUrl);
    /**
     * Sends DeleteFile: the id as an int. The reply "0" replaces audioFileList; other codes leave it. For a
     * negative id nothing is sent: the entry of an upload is removed from the list at once.
     */
    Q_INVOKABLE void deleteAudioFile(int audioID);
    /**
     * Looks for a device that is bound to a camera; sends nothing.
     *
     * @param nodeId the camera's id; case matters
     * @return "id" (int) and "name" (QString) of the first such device in the model; empty without one
     */
    Q_INVOKABLE QVariantMap queryBindingIPAudio(const QString& nodeId);
    /**
     * Sends GetNetworkAudioGroup without a payload. The reply replaces all rows of the group model; it has no
     * signal. A failed reply leaves the model empty. The plug-in does not call this by itself. The names of a
     * group's devices are those of the device model at the time of the reply.
     */
    Q_INVOKABLE void getNetworkAudioGroup();
    /**
     * Sends AddNetworkAudioGroup: a map of "groupName" and "networkAudioIDList" (QString, the ids joined with
     * ","). addNetworkAudioGroupResponse follows.
     *
     * @param groupName          the name to display
     * @param networkAudioIDList a list of device ids, as ints or texts
     */
    Q_INVOKABLE bool addNetworkAudioGroup(const QString& groupName, const QVariant& networkAudioIDList);
    /**
     * Sends UpdateNetworkAudioGroup: the map of addNetworkAudioGroup with "groupID" (int). All fields are
     * replaced. updateNetworkAudioGroupResponse follows.
     */
    Q_INVOKABLE bool updateNetworkAudioGroup(int id, const QString& groupName,
                                             const QVariant& networkAudioIDList);
    /**
     * Sends DeleteNetworkAudioGroup: the id as an int. deleteNetworkAudioGroupResponse follows. Schedules
     * keep the id until they are fetched again.
     */
    Q_INVOKABLE bool deleteNetworkAudioGroup(int id);
    /**
     * Sends AddNetworkAudioSchedule: @p schedule with "groupIDList" and "networkAudioIDList" as texts, the
     * ids joined with ",". All other keys go to the server as they are. addNetworkAudioScheduleResponse
     * follows.
     *
     * @param schedule "enableSchedule", "scheduleName", "scheduleStartTime", "scheduleType",
     * "scheduleSettings", "enableScheduleEndTime", "scheduleEndTime", "audioID" in the server's format, and
     * the two lists of ids, as ints or texts
     */
    Q_INVOKABLE bool addNetworkAudioSchedule(const QVariantMap& schedule);
    /**
     * Sends UpdateNetworkAudioSchedule: the map of addNetworkAudioSchedule with "scheduleID" (int), which
     * replaces one in @p schedule. The reply replaces all fields of the row: a key that it lacks empties its
     * role. updateNetworkAudioScheduleResponse follows.
     */
    Q_INVOKABLE bool updateNetworkAudioSchedule(int id, const QVariantMap& schedule);
    /** Sends DeleteNetworkAudioSchedule: the id as an int. deleteNetworkAudioScheduleResponse follows. */
    Q_INVOKABLE bool deleteNetworkAudioSchedule(int id);
    /**
     * Sends GetNetworkAudioSchedule without a payload. The reply replaces all rows of the schedule model; it
     * has no signal. A failed reply leaves the model empty. The plug-in does not call this by itself.
     */
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
