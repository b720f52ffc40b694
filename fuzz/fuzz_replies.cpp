// Requests of the plug-in, replies with the requests' own user data, and events, in any order: replies come
// twice, under another command's name, from inside the request, or after the plug-in's object has been
// destroyed and made again.

#include "fuzz/VariantTree.h"
#include "platform/FrameworkWrapperBase.h"
#include "protocol/ReturnCode.h"
#include "src/PluginVoiceDesk.h"
#include "src/vocabulary/StreamType.h"

#include <QCoreApplication>
#include <QMediaPlayer>

#include <cstdlib>
#include <memory>
#include <vector>

namespace {

namespace V = Vocabulary;

constexpr int deepestNesting = 3; // steps that are taken while another one runs
constexpr int maxSteps = 200;

// Also one that the reference server does not have.
const QString codes[] = {ReturnCode::success, ReturnCode::fileRefused, QStringLiteral("1"), QString()};

/** What a request's user data points to. */
enum class Kind
{
    DeviceId,
    Guid,
};

bool isFileReply(const QString& command)
{
    return command == V::UploadFile || command == V::GetAudioFile || command == V::DeleteFile;
}

/** A microphone that starts or does not. */
class Capture : public FrameSmithWrapper
{
public:
    bool StartAudioCapture() override { return starts; }
    void StopAudioCapture() override {}

    bool starts = true;
};

/** The plug-in and its host, in which one input's steps are taken. */
class Session : public FrameworkWrapperBase
{
public:
    explicit Session(FuzzedDataProvider& input);
    virtual ~Session();

    void run();

    /** One step more, perhaps, while another one runs. */
    void stepInside();

    /** What happens while an upload waits; that may end the plug-in's object. */
    void stepInUpload();

    static Session* current;

private:
    struct Request
    {
        QString command;
        void* userData;
    };

    void reservedOperation() override {}
    bool SendCommand(void*, const QString&, const QString& command, const QVariant&, void* userData, bool,
                     const QString&) override;

    void makePlugin();
    void step();
    void talkRequest();
    void recordRequest();
    void reply();
    void replyWithOwnBlock(const QString& command, const QString& code);
    void deliver(const QString& command, const QVariant& result, void* userData, const QString& code);
    QString text() { return QString::fromStdString(m_input.ConsumeRandomLengthString(10)); }
    int id() { return m_input.ConsumeIntegralInRange(-3, 8); }

    FuzzedDataProvider& m_input;
    std::unique_ptr<PluginVoiceDesk> m_plugin;
    std::vector<Request> m_requests; ///< All of them, answered or not.
    QHash<void*, Kind> m_pending;    ///< Blocks that no reply has given back to the plug-in.
    int m_nesting = 0;
    int m_steps = 0;
};

Session* Session::current = nullptr;

Session::Session(FuzzedDataProvider& input) : m_input(input)
{
    current = this;
    makePlugin();
}

/** Every block comes back once. */
Session::~Session()
{
    m_nesting = deepestNesting; // the signals of these replies start nothing
    for (const Request& request : std::vector<Request>(m_requests)) {
        if (m_pending.contains(request.userData)) {
            deliver(request.command, QVariant(), request.userData, QStringLiteral("1"));
        }
    }
    m_plugin.reset();
    QCoreApplication::sendPostedEvents();
    current = nullptr;
}

bool Session::SendCommand(void* /*handle*/, const QString& /*id*/, const QString& command,
                          const QVariant& /*payload*/, void* userData, bool /*flag*/,
                          const QString& /*extra*/)
{
    if (userData != nullptr) {
        if (command != V::StartTalkToIPAudio && command != V::UploadFile) {
            std::abort(); // no other request has a block
        }
        m_pending.insert(userData, command == V::UploadFile ? Kind::Guid : Kind::DeviceId);
    }
    m_requests.push_back({command, userData});
    const int choice = m_input.ConsumeIntegralInRange(0, 15);
    if (choice == 15 && m_plugin) { // not while its constructor or destructor runs
        deliver(command, variantTree(m_input), userData, m_input.PickValueInArray(codes));
    }
    if (choice == 14) {
        m_pending.remove(userData); // a refused request's block is the plug-in's again
        return false;
    }
    return true;
}

void Session::makePlugin()
{
    static const auto capture = QSharedPointer<Capture>::create();
    capture->starts = m_input.ConsumeIntegralInRange(0, 7) != 0;
    m_plugin = std::make_unique<PluginVoiceDesk>();
    PluginVoiceDesk* plugin = m_plugin.get();
    plugin->InitialPluginBase(nullptr, nullptr, this);
    plugin->setFrameSmithWrapper(capture);
    plugin->getIPAudioModel(plugin);
    plugin->getNetworkAudioGroupModel(plugin);
    plugin->getNetworkAudioScheduleModel(plugin);
    // A front end that goes on from what it hears.
    for (const auto signal : {&PluginVoiceDesk::talkingChanged, &PluginVoiceDesk::audioFileListChanged,
                              &PluginVoiceDesk::ipAudioModelChanged, &PluginVoiceDesk::talkDisconnected}) {
        QObject::connect(plugin, signal, plugin, [this] { stepInside(); });
    }
    QObject::connect(plugin, &PluginVoiceDesk::startTalkToIPAudioResponse, plugin, [this] { stepInside(); });
}

void Session::run()
{
    while (m_input.remaining_bytes() > 0 && m_steps < maxSteps) {
        if (m_input.ConsumeIntegralInRange(0, 15) == 15) {
            m_plugin.reset();
            makePlugin();
        } else {
            step();
        }
    }
}

void Session::stepInside()
{
    if (m_nesting < deepestNesting && m_plugin && m_input.remaining_bytes() > 0 && m_input.ConsumeBool()) {
        step();
    }
}

void Session::stepInUpload()
{
    // Not for an upload out of a slot: no front end ends the plug-in from a slot of its signals.
    if (m_nesting == 1 && m_input.ConsumeIntegralInRange(0, 3) == 1) {
        m_plugin.reset();
        makePlugin();
    }
    stepInside();
}

void Session::step()
{
    ++m_nesting;
    ++m_steps;
    switch (m_input.ConsumeIntegralInRange(0, 5)) {
    case 0:
        m_plugin->EventProcessor(FuzzWords::pickEvent(m_input), 0, 0, 0, variantTree(m_input), QString());
        break;
    case 1:
        QMetaObject::invokeMethod(
            m_plugin.get(), "handleAudioCapture",
            Q_ARG(DWORD, m_input.PickValueInArray<DWORD>({StreamType::G711MuLaw, StreamType::G711ALaw, 0})),
            Q_ARG(QByteArray, QByteArray::fromStdString(m_input.ConsumeRandomLengthString(100))));
        break;
    case 2:
        talkRequest();
        break;
    case 3:
        recordRequest();
        break;
    default:
        reply();
    }
    --m_nesting;
}

void Session::talkRequest()
{
    switch (m_input.ConsumeIntegralInRange(0, 6)) {
    case 0:
        m_plugin->startTalk(text(), text());
        break;
    case 1:
        m_plugin->stopTalk();
        break;
    case 2:
        m_plugin->stopTalkToIPAudio(id());
        break;
    case 3:
        m_plugin->uploadFile(QUrl(QStringLiteral("file:///dev/null")));
        break;
    default:
        m_plugin->startTalkToIPAudio(id());
    }
}

void Session::recordRequest()
{
    switch (m_input.ConsumeIntegralInRange(0, 7)) {
    case 0:
        m_plugin->PluginServerConnected();
        break;
    case 1:
        m_plugin->deleteAudioFile(id());
        break;
    case 2:
        m_plugin->queryBindingIPAudio(text());
        break;
    case 3:
        m_plugin->addNetworkAudioGroup(text(), variantTree(m_input));
        break;
    case 4:
        m_plugin->addNetworkAudioSchedule(variantTree(m_input).toMap());
        break;
    case 5:
        m_plugin->addIPAudio(text(), text(), id(), text(), text(), {text()});
        break;
    case 6:
        m_plugin->playAudio(id(), id());
        break;
    default:
        m_plugin->stopCurrentGroupAudio(id());
    }
}

void Session::reply()
{
    const QString code = m_input.PickValueInArray(codes);
    if (m_requests.empty() || m_input.ConsumeIntegralInRange(0, 3) == 0) {
        const QString command = FuzzWords::pickCommand(m_input);
        if (m_input.ConsumeBool()) {
            replyWithOwnBlock(command, code);
        } else {
            deliver(command, variantTree(m_input), nullptr, code);
        }
        return;
    }
    const Request request = m_requests[m_input.ConsumeIntegralInRange<std::size_t>(0, m_requests.size() - 1)];
    const QString command =
        m_input.ConsumeIntegralInRange(0, 3) == 0 ? FuzzWords::pickCommand(m_input) : request.command;
    deliver(command, variantTree(m_input), request.userData, code);
}

/** A reply to a request that the host made itself: what the reply's handler reads, it frees. */
void Session::replyWithOwnBlock(const QString& command, const QString& code)
{
    if (command == V::StartTalkToIPAudio) {
        auto* number = new int(id());
        m_plugin->CommandProcessor(command, variantTree(m_input), number, code, QString(), false, QString());
        return;
    }
    auto guid = std::make_unique<QString>(text());
    const bool freed = isFileReply(command) && code == V::returnCodeFileRefused;
    void* block = freed ? guid.release() : guid.get();
    m_plugin->CommandProcessor(command, variantTree(m_input), block, code, QString(), false, QString());
}

void Session::deliver(const QString& command, const QVariant& result, void* userData, const QString& code)
{
    const bool readsNumber = command == V::StartTalkToIPAudio;
    const auto block = m_pending.constFind(userData);
    if (block != m_pending.constEnd()) {
        if (*block == Kind::DeviceId ? readsNumber : isFileReply(command)) {
            m_pending.erase(block); // taken, and freed
        }
    } else if (readsNumber || (isFileReply(command) && code == V::returnCodeFileRefused)) {
        userData = nullptr; // a block that is freed already would be read as the host's own
    }
    m_plugin->CommandProcessor(command, result, userData, code, QString(), false, QString());
}

} // namespace

// In the place of a media back end: other things happen while an upload waits for a duration.
void QMediaPlayer::setMedia(const QMediaContent& /*media*/, QIODevice* /*stream*/)
{
    QMetaObject::invokeMethod(
        this,
        [this] {
            Session::current->stepInUpload();
            Q_EMIT durationChanged(0);
        },
        Qt::QueuedConnection);
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static int argc = 1;
    static char name[] = "fuzz";
    static char* argv[] = {name, nullptr};
    static const QCoreApplication application(argc, argv);
    QCoreApplication::setLibraryPaths({}); // no sound, no media back end
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
    FuzzedDataProvider input(data, size);
    Session(input).run();
    return 0;
}
