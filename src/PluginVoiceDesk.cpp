#include "src/PluginVoiceDesk.h"

#include "platform/FrameworkWrapperBase.h"
#include "src/models/ItemRoles.h"
#include "src/playback/SystemProbe.h"
#include "src/vocabulary/LogGate.h"
#include "src/vocabulary/Vocabulary.h"

#include <new>

namespace {

constexpr int microphonePollInterval = 1000; // ms

bool pollsMicrophone()
{
    return SystemProbe::current().productType() == QLatin1String("windows");
}

/** Whether the static objects of the library, such as the words of the protocol, exist. */
bool libraryInUse = true;

[[maybe_unused]] const struct LibraryEnd
{
    ~LibraryEnd() { libraryInUse = false; }
} libraryEnd;

} // namespace

PluginVoiceDesk::PluginVoiceDesk() = default;

PluginVoiceDesk::~PluginVoiceDesk()
{
    VOICEDESK_TRACE("PluginVoiceDesk::~PluginVoiceDesk");
    // A host that leaves the object to Qt, which destroys it at the very end of the process, is gone by then.
    if (libraryInUse) {
        stopAllTalk();
    }
}

bool PluginVoiceDesk::audioInDevAvailable() const
{
    return m_audioInDevFlag;
}

bool PluginVoiceDesk::talking() const
{
    return m_talkingFlag;
}

QVariantList PluginVoiceDesk::audioFileList() const
{
    return m_audioFiles;
}

QList<QVariant> PluginVoiceDesk::getTalkTargetList() const
{
    return m_talkTargetList;
}

void PluginVoiceDesk::setTalkTargetList(QList<QVariant>& targets)
{
    m_talkTargetList.swap(targets);
}

void PluginVoiceDesk::tst_setTalking(bool talking)
{
    m_talkingFlag = talking;
}

bool PluginVoiceDesk::InitialPluginBase(QQmlContext* context, void* pluginHandle,
                                        FrameworkWrapperBase* framework)
{
    m_pluginName = QStringLiteral("VoiceDeskPlugin");
    m_pluginId = QStringLiteral("710EF4C43CF94BB2A4A359E0796BC4F5");
    m_pluginHandle = pluginHandle;
    m_framework = framework;
    return Init(context);
}

bool PluginVoiceDesk::Init(QQmlContext* /*context*/)
{
    VOICEDESK_TRACE("PluginVoiceDesk::Init");

    // Deliberate: a default-constructed QAudioDeviceInfo is always null, so the list stays empty, the
    // property starts out false, and only a timer tick can raise it.
    const QAudioDeviceInfo inputDevice;
    QList<QAudioDeviceInfo> inputDevices;
    if (!inputDevice.isNull()) {
        inputDevices = SystemProbe::current().audioDevices(QAudio::AudioInput);
    }
    m_audioInDevFlag = pollsMicrophone() && !inputDevices.isEmpty();
    m_talkingFlag = false;
    m_talkSequence = 0;

    try {
        m_frameSmithWrapper.reset(new FrameSmithWrapper);
    } catch (...) {
        VOICEDESK_LOG_ERROR("%s, new frame smith wrapper failed", "PluginVoiceDesk::Init");
        return false;
    }
    if (!createModel(m_ipAudioModel, ipAudioRoleNames())) {
        VOICEDESK_LOG_ERROR("%s, create ip audio list model failed", "PluginVoiceDesk::Init");
        return false;
    }
    if (!createModel(m_networkAudioGroupModel, networkAudioGroupRoleNames())) {
        VOICEDESK_LOG_ERROR("%s, create network audio group list model failed", "PluginVoiceDesk::Init");
        return false;
    }
    if (!createModel(m_networkAudioScheduleModel, networkAudioScheduleRoleNames())) {
        VOICEDESK_LOG_ERROR("%s, create network audio schedule list model failed", "PluginVoiceDesk::Init");
        return false;
    }
    fillCommandHandlers();
    if (pollsMicrophone()) {
        startTimer(microphonePollInterval, Qt::CoarseTimer);
    }
    connect(m_frameSmithWrapper.data(), &FrameSmithWrapper::audioCaptured, this,
            &PluginVoiceDesk::handleAudioCapture);
    return true;
}

bool PluginVoiceDesk::createModel(QSharedPointer<QStandardItemModel>& model,
                                  const QHash<int, QByteArray>& roleNames)
{
    model.reset(new (std::nothrow) QStandardItemModel(this));
    if (model.isNull()) {
        return false;
    }
    model->setItemRoleNames(roleNames);
    return true;
}

void PluginVoiceDesk::fillCommandHandlers()
{
    const auto full = [this](FullHandler handler) -> CommandHandler {
        return [this, handler](const QVariant& result, void* userData, const QString& returnCode,
                               const QString& errorCode, bool flag, const QString& extra) {
            (this->*handler)(result, userData, returnCode, errorCode, flag, extra);
        };
    };
    const auto file = [this](FileHandler handler) -> CommandHandler {
        return
            [this, handler](const QVariant& result, void* userData, const QString& returnCode, const QString&,
                            bool, const QString&) { (this->*handler)(result, userData, returnCode); };
    };
    const auto brief = [this](ShortHandler handler) -> CommandHandler {
        return [this, handler](const QVariant& result, void*, const QString& returnCode, const QString&, bool,
                               const QString&) { (this->*handler)(result, returnCode); };
    };
    using namespace Vocabulary;
    m_commandHandlers[StartTalk] = full(&PluginVoiceDesk::handleStartTalk);
    m_commandHandlers[StartTalkToIPAudio] = full(&PluginVoiceDesk::handleStartTalkToIPAudio);
    m_commandHandlers[StopTalk] = full(&PluginVoiceDesk::handleStopTalk);
    m_commandHandlers[StopTalkToIPAudio] = full(&PluginVoiceDesk::handleStopTalkToIPAudio);
    m_commandHandlers[TalkData] = full(&PluginVoiceDesk::handleSendTalkData);
    m_commandHandlers[AddIPAudio] = full(&PluginVoiceDesk::handleAddIPAudioData);
    m_commandHandlers[PlayAudio] = full(&PluginVoiceDesk::handlePlayAudio);
    m_commandHandlers[PlayGroupAudio] = full(&PluginVoiceDesk::handlePlayAudio);
    m_commandHandlers[StopCurrentAudio] = full(&PluginVoiceDesk::handleStopCurrentAudio);
    m_commandHandlers[StopCurrentGroupAudio] = full(&PluginVoiceDesk::handleStopCurrentAudio);
    m_commandHandlers[UploadFile] = file(&PluginVoiceDesk::handleAudioFileList);
    m_commandHandlers[GetAudioFile] = file(&PluginVoiceDesk::handleAudioFileList);
    m_commandHandlers[DeleteFile] = file(&PluginVoiceDesk::handleAudioFileList);
    m_commandHandlers[UpdateIPAudio] = full(&PluginVoiceDesk::handleUpdateIPAudioData);
    m_commandHandlers[DeleteIPAudio] = full(&PluginVoiceDesk::handleDeleteIPAudioData);
    m_commandHandlers[RetrieveIPAudioModel] = full(&PluginVoiceDesk::handleRetrieveIPAudioData);
    m_commandHandlers[AddNetworkAudioGroup] = brief(&PluginVoiceDesk::handleAddNetworkAudioGroup);
    m_commandHandlers[UpdateNetworkAudioGroup] = brief(&PluginVoiceDesk::handleUpdateNetworkAudioGroup);
    m_commandHandlers[DeleteNetworkAudioGroup] = brief(&PluginVoiceDesk::handleDeleteNetworkAudioGroup);
    m_commandHandlers[GetNetworkAudioGroup] = brief(&PluginVoiceDesk::handleGetNetworkAudioGroup);
    m_commandHandlers[AddNetworkAudioSchedule] = brief(&PluginVoiceDesk::handleAddNetworkAudioSchedule);
    m_commandHandlers[UpdateNetworkAudioSchedule] = brief(&PluginVoiceDesk::handleUpdateNetworkAudioSchedule);
    m_commandHandlers[DeleteNetworkAudioSchedule] = brief(&PluginVoiceDesk::handleDeleteNetworkAudioSchedule);
    m_commandHandlers[GetNetworkAudioSchedule] = brief(&PluginVoiceDesk::handleGetNetworkAudioSchedule);
}

void PluginVoiceDesk::CommandProcessor(QString command, QVariant result, void* userData, QString returnCode,
                                       QString errorCode, bool flag, const QString& extra)
{
    VOICEDESK_TRACE("PluginVoiceDesk::CommandProcessor");
    // A copy, so that a handler can't pull its own function from under itself.
    const CommandHandler handler = m_commandHandlers.value(command);
    if (handler) {
        handler(result, userData, returnCode, errorCode, flag, extra);
    }
}

void PluginVoiceDesk::CommandProcessorEx(QString /*command*/, ConfigBase* /*config*/, QVariant /*result*/,
                                         void* /*userData*/, QString /*returnCode*/, QString /*errorCode*/,
                                         bool /*flag*/, const QString& /*extra*/)
{
    // Deliberate: the per-server calls are not served.
    VOICEDESK_TRACE("PluginVoiceDesk::CommandProcessorEx");
}

void PluginVoiceDesk::ErrorProcessor(QString /*command*/, void* /*userData*/, QString /*errorCode*/)
{
    VOICEDESK_TRACE("PluginVoiceDesk::ErrorProcessor");
}

void PluginVoiceDesk::EventProcessor(QString event, qint64 /*time*/, int /*first*/, int /*second*/,
                                     QVariant payload, const QString& /*extra*/)
{
    VOICEDESK_TRACE("PluginVoiceDesk::EventProcessor");
    if (event == Vocabulary::AudioReceived) {
        handleAudioReceived(payload);
    } else if (event == Vocabulary::TalkDisconnected) {
        handleTalkDisconnected(payload);
    } else if (event == Vocabulary::PlayAudioFailed) {
        handlePlayAudioError(payload);
    }
}

void PluginVoiceDesk::EventProcessorEx(QString /*event*/, ConfigBase* /*config*/, qint64 /*time*/,
                                       int /*first*/, int /*second*/, QVariant /*payload*/,
                                       const QString& /*extra*/)
{
    // Deliberate: the per-server calls are not served.
    VOICEDESK_TRACE("PluginVoiceDesk::EventProcessorEx");
}

void PluginVoiceDesk::PluginServerConnected()
{
    retrieveIPAudioModel();
    send(Vocabulary::GetAudioFile, QVariant());
}

void PluginVoiceDesk::timerEvent(QTimerEvent* /*event*/)
{
    const bool available = !SystemProbe::current().audioDevices(QAudio::AudioInput).isEmpty();
    if (available == m_audioInDevFlag) {
        return;
    }
    if (!available) {
        stopTalk(); // before the front end hears of the loss
    }
    m_audioInDevFlag = available;
    Q_EMIT audioInDevAvailableChanged();
}

bool PluginVoiceDesk::isAudioDeviceAvailable()
{
    return !SystemProbe::current().audioDevices(QAudio::AudioOutput).isEmpty();
}

void PluginVoiceDesk::setFrameSmithWrapper(const QSharedPointer<FrameSmithWrapper>& wrapper)
{
    m_frameSmithWrapper = wrapper;
}

bool PluginVoiceDesk::send(const QString& command, const QVariant& param, void* userData)
{
    return m_framework != nullptr &&
           m_framework->SendCommand(m_pluginHandle, m_pluginId, command, param, userData, false, QString());
}
