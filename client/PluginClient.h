#pragma once

#include "client/RecordModels.h"

#include <QMetaMethod>
#include <QObject>
#include <QPointer>
#include <QUrl>
#include <QVariant>

#include <array>

/** An audio file on the server, or on its way there. */
struct AudioFileRow
{
    int id = 0;     ///< Negative until the server has given one.
    QString name;   ///< Of the file.
    int length = 0; ///< ms; 0 when unknown.
    int status = 0; ///< 1 uploading, 2 ready, 4 and 5 refused.
};

/**
 * The typed interface to the plug-in for C++ and QML: its invokables, signals, properties and models, under
 * its own names. Their payloads, errors and times are those of PluginVoiceDesk. No other class reaches the
 * plug-in by name. Without a plug-in, or without the method in it, an invokable does nothing and returns
 * false or an empty value. Used on the plug-in's thread.
 */
class PluginClient : public QObject
{
    Q_OBJECT
    /** Whether a microphone is present. */
    Q_PROPERTY(bool audioInDevAvailable READ audioInDevAvailable NOTIFY audioInDevAvailableChanged)
    /** Whether at least one talk target is open. */
    Q_PROPERTY(bool talking READ talking NOTIFY talkingChanged)
    /** The audio files on the server: maps with "audioID", "audioName", "audioLength" (ms), "audioStatus". */
    Q_PROPERTY(QVariantList audioFileList READ audioFileList NOTIFY audioFileListChanged)

public:
    /**
     * Finds the members of this class in a plug-in and connects its signals. Called once.
     *
     * @param plugin initialised
     * @return false when something is missing; errorString then names it, and the rest works
     */
    bool attach(QObject* plugin);

    /** Returns what the plug-in lacks. */
    QString errorString() const { return m_errorString; }

    /** Returns the property audioInDevAvailable. */
    bool audioInDevAvailable() const;
    /** Returns the property talking. */
    bool talking() const;
    /** Returns the property audioFileList: each map has all keys, of the right types, whatever the server
     * sent. */
    QVariantList audioFileList() const;

    /** Returns the audio files on the server, in the plug-in's order. */
    QList<AudioFileRow> audioFiles() const;

    /**
     * @name Invokables of the plug-in
     * @{
     */
    /** Calls the plug-in's invokable of this name. */
    Q_INVOKABLE void setMicVolume(int volume);
    Q_INVOKABLE void setMicMute(bool mute);
    Q_INVOKABLE bool startTalk(const QString& camId, const QString& relayPath = QString());
    Q_INVOKABLE bool startTalkToIPAudio(int ipAudioId);
    Q_INVOKABLE bool stopTalk();
    Q_INVOKABLE bool stopTalkToIPAudio(int ipAudioId);
    Q_INVOKABLE bool startAudioCapture();
    Q_INVOKABLE void stopAudioCapture();

    Q_INVOKABLE bool addIPAudio(const QString& deviceName, const QString& ip, int port,
                                const QString& username, const QString& password,
                                const QStringList& bindingCameraList);
    Q_INVOKABLE bool updateIPAudio(int ipAudioId, const QString& deviceName, const QString& ip, int port,
                                   const QString& username, const QString& password,
                                   const QStringList& bindingCameraList);
    Q_INVOKABLE bool deleteIPAudio(int ipAudioId);
    Q_INVOKABLE void retrieveIPAudioModel();
    Q_INVOKABLE QVariantMap queryBindingIPAudio(const QString& nodeId);

    Q_INVOKABLE void playAudio(int ipAudioId, int audioFileId);
    Q_INVOKABLE void playGroupAudio(int networkAudioGroupId, int audioFileId);
    Q_INVOKABLE void stopCurrentAudio(int ipAudioId);
    Q_INVOKABLE void stopCurrentGroupAudio(int networkAudioGroupId);

    Q_INVOKABLE bool uploadFile(const QUrl& fileUrl);
    Q_INVOKABLE void deleteAudioFile(int audioID);

    Q_INVOKABLE void getNetworkAudioGroup();
    Q_INVOKABLE bool addNetworkAudioGroup(const QString& groupName, const QVariant& networkAudioIDList);
    Q_INVOKABLE bool updateNetworkAudioGroup(int id, const QString& groupName,
                                             const QVariant& networkAudioIDList);
    Q_INVOKABLE bool deleteNetworkAudioGroup(int id);

    Q_INVOKABLE void getNetworkAudioSchedule();
    Q_INVOKABLE bool addNetworkAudioSchedule(const QVariantMap& schedule);
    Q_INVOKABLE bool updateNetworkAudioSchedule(int id, const QVariantMap& schedule);
    Q_INVOKABLE bool deleteNetworkAudioSchedule(int id);
    /** @} */

    /**
     * @name Models of the plug-in
     * @{
     */
    /** Makes a model with a filter of its own, which the parent owns. Null when the plug-in has no such
     * model. */
    Q_INVOKABLE DeviceModel* getIPAudioModel(QObject* parent) const;
    Q_INVOKABLE GroupModel* getNetworkAudioGroupModel(QObject* parent) const;
    Q_INVOKABLE ScheduleModel* getNetworkAudioScheduleModel(QObject* parent) const;
    /** @} */

Q_SIGNALS:
    /**
     * @name Signals of the plug-in
     * @{
     */
    /** Emitted when the plug-in emits its signal of this name. */
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
    /** @} */

private:
    /** The plug-in's invokables, in the order of their signatures in the source. */
    enum Method
    {
        SetMicVolume,
        SetMicMute,
        StartTalk,
        StartTalkToIPAudio,
        StopTalk,
        StopTalkToIPAudio,
        StartAudioCapture,
        StopAudioCapture,
        AddIPAudio,
        UpdateIPAudio,
        DeleteIPAudio,
        RetrieveIPAudioModel,
        QueryBindingIPAudio,
        PlayAudio,
        PlayGroupAudio,
        StopCurrentAudio,
        StopCurrentGroupAudio,
        UploadFile,
        DeleteAudioFile,
        GetNetworkAudioGroup,
        AddNetworkAudioGroup,
        UpdateNetworkAudioGroup,
        DeleteNetworkAudioGroup,
        GetNetworkAudioSchedule,
        AddNetworkAudioSchedule,
        UpdateNetworkAudioSchedule,
        DeleteNetworkAudioSchedule,
        GetIPAudioModel,
        GetNetworkAudioGroupModel,
        GetNetworkAudioScheduleModel,
        MethodCount,
    };
    struct MethodName
    {
        const char* returnType;
        const char* signature;
    };
    static const std::array<MethodName, MethodCount> methodNames;

    /** Calls an invokable; a default-made result when there is none. */
    template<class Result, class... Arguments>
    Result call(Method method, const Arguments&... arguments) const;

    template<class Model>
    Model* model(Method getter, QObject* parent) const;
    template<class Model>
    QStringList faultsOf(Method getter) const;

    QStringList findMethods();
    QStringList findProperties() const;
    QStringList connectSignals();

    QPointer<QObject> m_plugin;
    std::array<QMetaMethod, MethodCount> m_methods; ///< Invalid where the plug-in has none.
    QString m_errorString;
};
