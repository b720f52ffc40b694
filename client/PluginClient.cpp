#include "client/PluginClient.h"

#include "src/vocabulary/Vocabulary.h"

#include <QMetaProperty>

#include <memory>

namespace {

constexpr char audioInDevAvailableProperty[] = "audioInDevAvailable";
constexpr char talkingProperty[] = "talking";
constexpr char audioFileListProperty[] = "audioFileList";

} // namespace

const std::array<PluginClient::MethodName, PluginClient::MethodCount> PluginClient::methodNames = {{
    {"void", "setMicVolume(int)"},
    {"void", "setMicMute(bool)"},
    {"bool", "startTalk(QString,QString)"},
    {"bool", "startTalkToIPAudio(int)"},
    {"bool", "stopTalk()"},
    {"bool", "stopTalkToIPAudio(int)"},
    {"bool", "startAudioCapture()"},
    {"void", "stopAudioCapture()"},
    {"bool", "addIPAudio(QString,QString,int,QString,QString,QStringList)"},
    {"bool", "updateIPAudio(int,QString,QString,int,QString,QString,QStringList)"},
    {"bool", "deleteIPAudio(int)"},
    {"void", "retrieveIPAudioModel()"},
    {"QVariantMap", "queryBindingIPAudio(QString)"},
    {"void", "playAudio(int,int)"},
    {"void", "playGroupAudio(int,int)"},
    {"void", "stopCurrentAudio(int)"},
    {"void", "stopCurrentGroupAudio(int)"},
    {"bool", "uploadFile(QUrl)"},
    {"void", "deleteAudioFile(int)"},
    {"void", "getNetworkAudioGroup()"},
    {"bool", "addNetworkAudioGroup(QString,QVariant)"},
    {"bool", "updateNetworkAudioGroup(int,QString,QVariant)"},
    {"bool", "deleteNetworkAudioGroup(int)"},
    {"void", "getNetworkAudioSchedule()"},
    {"bool", "addNetworkAudioSchedule(QVariantMap)"},
    {"bool", "updateNetworkAudioSchedule(int,QVariantMap)"},
    {"bool", "deleteNetworkAudioSchedule(int)"},
    {"QObject*", "getIPAudioModel(QObject*)"},
    {"QObject*", "getNetworkAudioGroupModel(QObject*)"},
    {"QObject*", "getNetworkAudioScheduleModel(QObject*)"},
}};

bool PluginClient::attach(QObject* plugin)
{
    m_plugin = plugin;
    QStringList missing = findMethods();
    missing += findProperties();
    missing += connectSignals();
    missing += faultsOf<DeviceModel>(GetIPAudioModel);
    missing += faultsOf<GroupModel>(GetNetworkAudioGroupModel);
    missing += faultsOf<ScheduleModel>(GetNetworkAudioScheduleModel);
    if (missing.isEmpty()) {
        m_errorString.clear();
        return true;
    }
    m_errorString = QStringLiteral("the plug-in lacks %1").arg(missing.join(QStringLiteral(", ")));
    return false;
}

QStringList PluginClient::findMethods()
{
    QStringList missing;
    const QMetaObject* meta = m_plugin->metaObject();
    for (std::size_t i = 0; i < methodNames.size(); ++i) {
        const QMetaMethod found = meta->method(meta->indexOfMethod(methodNames[i].signature));
        const bool fits = found.isValid() && qstrcmp(found.typeName(), methodNames[i].returnType) == 0;
        m_methods[i] = fits ? found : QMetaMethod();
        if (!fits) {
            missing.append(QStringLiteral("%1 %2").arg(QLatin1String(methodNames[i].returnType),
                                                       QLatin1String(methodNames[i].signature)));
        }
    }
    return missing;
}

QStringList PluginClient::findProperties() const
{
    QStringList missing;
    const QMetaObject* meta = m_plugin->metaObject();
    for (int i = staticMetaObject.propertyOffset(); i < staticMetaObject.propertyCount(); ++i) {
        const QMetaProperty own = staticMetaObject.property(i);
        const QMetaProperty found = meta->property(meta->indexOfProperty(own.name()));
        if (!found.isValid() || found.userType() != own.userType()) {
            missing.append(QStringLiteral("property %1").arg(QLatin1String(own.name())));
        }
    }
    return missing;
}

/** Every signal of this class is one of the plug-in's. */
QStringList PluginClient::connectSignals()
{
    QStringList missing;
    const QMetaObject* meta = m_plugin->metaObject();
    for (int i = staticMetaObject.methodOffset(); i < staticMetaObject.methodCount(); ++i) {
        const QMetaMethod own = staticMetaObject.method(i);
        if (own.methodType() != QMetaMethod::Signal) {
            continue;
        }
        const QMetaMethod found = meta->method(meta->indexOfSignal(own.methodSignature().constData()));
        if (!found.isValid()) {
            missing.append(QStringLiteral("signal %1").arg(QLatin1String(own.methodSignature())));
        } else {
            connect(m_plugin, found, this, own);
        }
    }
    return missing;
}

template<class Result, class... Arguments>
Result PluginClient::call(Method method, const Arguments&... arguments) const
{
    // The types are those of the signature, which attach has compared: their names are not read again.
    const auto pass = [](const auto& argument) { return QGenericArgument("argument", &argument); };
    const QMetaMethod& invokable = m_methods[method];
    if constexpr (std::is_void_v<Result>) {
        if (m_plugin && invokable.isValid()) {
            invokable.invoke(m_plugin, Qt::DirectConnection, pass(arguments)...);
        }
    } else {
        Result result{};
        if (m_plugin && invokable.isValid()) {
            invokable.invoke(m_plugin, Qt::DirectConnection,
                             QGenericReturnArgument(methodNames[method].returnType, &result),
                             pass(arguments)...);
        }
        return result;
    }
}

template<class Model>
Model* PluginClient::model(Method getter, QObject* parent) const
{
    QObject* const nobody = nullptr;
    auto* source = qobject_cast<QAbstractItemModel*>(call<QObject*>(getter, nobody));
    if (source == nullptr) {
        return nullptr;
    }
    auto* model = new Model(source, parent);
    source->setParent(model);
    return model;
}

/** What a model of the plug-in lacks; nothing for a getter that is missed itself. */
template<class Model>
QStringList PluginClient::faultsOf(Method getter) const
{
    if (!m_methods[getter].isValid()) {
        return {};
    }
    const QString name = QString::fromLatin1(m_methods[getter].name());
    const std::unique_ptr<Model> made(model<Model>(getter, nullptr));
    if (!made) {
        return {QStringLiteral("a model from %1").arg(name)};
    }
    QStringList faults;
    const QStringList roles = made->missingRoles();
    for (const QString& role : roles) {
        faults.append(QStringLiteral("role %1 of %2").arg(role, name));
    }
    if constexpr (std::is_same_v<Model, GroupModel>) {
        const QMetaObject* meta = made->sourceModel()->metaObject();
        const QStringList signatures = GroupModel::sourceMethods();
        for (const QString& signature : signatures) {
            if (meta->indexOfMethod(signature.toLatin1().constData()) < 0) {
                faults.append(QStringLiteral("%1 of %2").arg(signature, name));
            }
        }
    }
    return faults;
}

bool PluginClient::audioInDevAvailable() const
{
    return m_plugin && m_plugin->property(audioInDevAvailableProperty).toBool();
}

bool PluginClient::talking() const
{
    return m_plugin && m_plugin->property(talkingProperty).toBool();
}

QVariantList PluginClient::audioFileList() const
{
    QVariantList list;
    const QList<AudioFileRow> files = audioFiles();
    for (const AudioFileRow& file : files) {
        list.append(QVariantMap{{Vocabulary::audioID, file.id},
                                {Vocabulary::audioName, file.name},
                                {Vocabulary::audioLength, file.length},
                                {Vocabulary::audioStatus, file.status}});
    }
    return list;
}

QList<AudioFileRow> PluginClient::audioFiles() const
{
    QList<AudioFileRow> files;
    const QVariantList entries =
        m_plugin ? m_plugin->property(audioFileListProperty).toList() : QVariantList();
    for (const QVariant& entry : entries) {
        const QVariantMap file = entry.toMap();
        files.append({file.value(Vocabulary::audioID).toInt(), file.value(Vocabulary::audioName).toString(),
                      file.value(Vocabulary::audioLength).toInt(),
                      file.value(Vocabulary::audioStatus).toInt()});
    }
    return files;
}

void PluginClient::setMicVolume(int volume)
{
    call<void>(SetMicVolume, volume);
}

void PluginClient::setMicMute(bool mute)
{
    call<void>(SetMicMute, mute);
}

bool PluginClient::startTalk(const QString& camId, const QString& relayPath)
{
    return call<bool>(StartTalk, camId, relayPath);
}

bool PluginClient::startTalkToIPAudio(int ipAudioId)
{
    return call<bool>(StartTalkToIPAudio, ipAudioId);
}

bool PluginClient::stopTalk()
{
    return call<bool>(StopTalk);
}

bool PluginClient::stopTalkToIPAudio(int ipAudioId)
{
    return call<bool>(StopTalkToIPAudio, ipAudioId);
}

bool PluginClient::startAudioCapture()
{
    return call<bool>(StartAudioCapture);
}

void PluginClient::stopAudioCapture()
{
    call<void>(StopAudioCapture);
}

bool PluginClient::addIPAudio(const QString& deviceName, const QString& ip, int port, const QString& username,
                              const QString& password, const QStringList& bindingCameraList)
{
    return call<bool>(AddIPAudio, deviceName, ip, port, username, password, bindingCameraList);
}

bool PluginClient::updateIPAudio(int ipAudioId, const QString& deviceName, const QString& ip, int port,
                                 const QString& username, const QString& password,
                                 const QStringList& bindingCameraList)
{
    return call<bool>(UpdateIPAudio, ipAudioId, deviceName, ip, port, username, password, bindingCameraList);
}

bool PluginClient::deleteIPAudio(int ipAudioId)
{
    return call<bool>(DeleteIPAudio, ipAudioId);
}

void PluginClient::retrieveIPAudioModel()
{
    call<void>(RetrieveIPAudioModel);
}

QVariantMap PluginClient::queryBindingIPAudio(const QString& nodeId)
{
    return call<QVariantMap>(QueryBindingIPAudio, nodeId);
}

void PluginClient::playAudio(int ipAudioId, int audioFileId)
{
    call<void>(PlayAudio, ipAudioId, audioFileId);
}

void PluginClient::playGroupAudio(int networkAudioGroupId, int audioFileId)
{
    call<void>(PlayGroupAudio, networkAudioGroupId, audioFileId);
}

void PluginClient::stopCurrentAudio(int ipAudioId)
{
    call<void>(StopCurrentAudio, ipAudioId);
}

void PluginClient::stopCurrentGroupAudio(int networkAudioGroupId)
{
    call<void>(StopCurrentGroupAudio, networkAudioGroupId);
}

bool PluginClient::uploadFile(const QUrl& fileUrl)
{
    return call<bool>(UploadFile, fileUrl);
}

void PluginClient::deleteAudioFile(int audioID)
{
    call<void>(DeleteAudioFile, audioID);
}

void PluginClient::getNetworkAudioGroup()
{
    call<void>(GetNetworkAudioGroup);
}

bool PluginClient::addNetworkAudioGroup(const QString& groupName, const QVariant& networkAudioIDList)
{
    return call<bool>(AddNetworkAudioGroup, groupName, networkAudioIDList);
}

bool PluginClient::updateNetworkAudioGroup(int id, const QString& groupName,
                                           const QVariant& networkAudioIDList)
{
    return call<bool>(UpdateNetworkAudioGroup, id, groupName, networkAudioIDList);
}

bool PluginClient::deleteNetworkAudioGroup(int id)
{
    return call<bool>(DeleteNetworkAudioGroup, id);
}

void PluginClient::getNetworkAudioSchedule()
{
    call<void>(GetNetworkAudioSchedule);
}

bool PluginClient::addNetworkAudioSchedule(const QVariantMap& schedule)
{
    return call<bool>(AddNetworkAudioSchedule, schedule);
}

bool PluginClient::updateNetworkAudioSchedule(int id, const QVariantMap& schedule)
{
    return call<bool>(UpdateNetworkAudioSchedule, id, schedule);
}

bool PluginClient::deleteNetworkAudioSchedule(int id)
{
    return call<bool>(DeleteNetworkAudioSchedule, id);
}

DeviceModel* PluginClient::getIPAudioModel(QObject* parent) const
{
    return model<DeviceModel>(GetIPAudioModel, parent);
}

GroupModel* PluginClient::getNetworkAudioGroupModel(QObject* parent) const
{
    return model<GroupModel>(GetNetworkAudioGroupModel, parent);
}

ScheduleModel* PluginClient::getNetworkAudioScheduleModel(QObject* parent) const
{
    return model<ScheduleModel>(GetNetworkAudioScheduleModel, parent);
}
