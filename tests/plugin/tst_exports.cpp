// What the library exports, read from the library: callers outside of it link to these names.

#include "tests/support/BuiltLibraries.h"

#include <QLibrary>
#include <QTest>

class TestExports : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void operations_data();
    void operations();
};

namespace {

#ifdef Q_OS_WIN
#define MANGLED_DWORD "m"
#else
#define MANGLED_DWORD "j"
#endif

// Names as the Itanium C++ ABI mangles them.

/** What Qt looks for in a plug-in. */
const char* const entryPoints[] = {
    "qt_plugin_instance",
    "qt_plugin_query_metadata",
};

/** PluginVoiceDesk: its public operations, signals and meta-object. */
const char* const pluginOperations[] = {
    "_ZN15PluginVoiceDesk16CommandProcessorE7QString8QVariantPvS0_S0_bRKS0_",
    "_ZN15PluginVoiceDesk18CommandProcessorExE7QStringP10ConfigBase8QVariantPvS0_S0_bRKS0_",
    "_ZN15PluginVoiceDesk14ErrorProcessorE7QStringPvS0_",
    "_ZN15PluginVoiceDesk14EventProcessorE7QStringxii8QVariantRKS0_",
    "_ZN15PluginVoiceDesk16EventProcessorExE7QStringP10ConfigBasexii8QVariantRKS0_",
    "_ZN15PluginVoiceDesk4InitEP11QQmlContext",
    "_ZN15PluginVoiceDesk17InitialPluginBaseEP11QQmlContextPvP20FrameworkWrapperBase",
    "_ZN15PluginVoiceDesk21PluginServerConnectedEv",
    "_ZN15PluginVoiceDeskC1Ev",
    "_ZN15PluginVoiceDesk10addIPAudioERK7QStringS2_iS2_S2_RK11QStringList",
    "_ZN15PluginVoiceDesk18addIPAudioResponseEbRK7QStringi",
    "_ZN15PluginVoiceDesk20addNetworkAudioGroupERK7QStringRK8QVariant",
    "_ZN15PluginVoiceDesk28addNetworkAudioGroupResponseEbRK7QStringi",
    "_ZN15PluginVoiceDesk23addNetworkAudioScheduleERK4QMapI7QString8QVariantE",
    "_ZN15PluginVoiceDesk31addNetworkAudioScheduleResponseEbRK7QStringi",
    "_ZNK15PluginVoiceDesk13audioFileListEv",
    "_ZN15PluginVoiceDesk20audioFileListChangedEv",
    "_ZNK15PluginVoiceDesk19audioInDevAvailableEv",
    "_ZN15PluginVoiceDesk26audioInDevAvailableChangedEv",
    "_ZN15PluginVoiceDesk15deleteAudioFileEi",
    "_ZN15PluginVoiceDesk13deleteIPAudioEi",
    "_ZN15PluginVoiceDesk21deleteIPAudioResponseEbRK7QStringi",
    "_ZN15PluginVoiceDesk23deleteNetworkAudioGroupEi",
    "_ZN15PluginVoiceDesk31deleteNetworkAudioGroupResponseEbRK7QStringi",
    "_ZN15PluginVoiceDesk26deleteNetworkAudioScheduleEi",
    "_ZN15PluginVoiceDesk34deleteNetworkAudioScheduleResponseEbRK7QStringi",
    "_ZNK15PluginVoiceDesk15getIPAudioModelEP7QObject",
    "_ZN15PluginVoiceDesk16getMediaDurationERK7QString",
    "_ZN15PluginVoiceDesk20getNetworkAudioGroupEv",
    "_ZNK15PluginVoiceDesk25getNetworkAudioGroupModelEP7QObject",
    "_ZN15PluginVoiceDesk23getNetworkAudioScheduleEv",
    "_ZNK15PluginVoiceDesk28getNetworkAudioScheduleModelEP7QObject",
    "_ZNK15PluginVoiceDesk17getTalkTargetListEv",
    "_ZN15PluginVoiceDesk19ipAudioModelChangedEv",
    "_ZNK15PluginVoiceDesk10metaObjectEv",
    "_ZN15PluginVoiceDesk9playAudioEii",
    "_ZN15PluginVoiceDesk14playAudioErrorERK7QStringS2_S2_S2_",
    "_ZN15PluginVoiceDesk17playAudioResponseEbiRK7QStringi",
    "_ZN15PluginVoiceDesk14playGroupAudioEii",
    "_ZN15PluginVoiceDesk11qt_metacallEN11QMetaObject4CallEiPPv",
    "_ZN15PluginVoiceDesk11qt_metacastEPKc",
    "_ZN15PluginVoiceDesk19queryBindingIPAudioERK7QString",
    "_ZN15PluginVoiceDesk20retrieveIPAudioModelEv",
    "_ZN15PluginVoiceDesk20setFrameSmithWrapperERK14QSharedPointerI17FrameSmithWrapperE",
    "_ZN15PluginVoiceDesk10setMicMuteEb",
    "_ZN15PluginVoiceDesk12setMicVolumeEi",
    "_ZN15PluginVoiceDesk17setTalkTargetListER5QListI8QVariantE",
    "_ZN15PluginVoiceDesk17startAudioCaptureEv",
    "_ZN15PluginVoiceDesk9startTalkERK7QStringS2_",
    "_ZN15PluginVoiceDesk17startTalkResponseEb",
    "_ZN15PluginVoiceDesk18startTalkToIPAudioEi",
    "_ZN15PluginVoiceDesk26startTalkToIPAudioResponseEbRK7QStringi",
    "_ZN15PluginVoiceDesk16staticMetaObjectE",
    "_ZN15PluginVoiceDesk16stopAudioCaptureEv",
    "_ZN15PluginVoiceDesk16stopCurrentAudioEi",
    "_ZN15PluginVoiceDesk24stopCurrentAudioResponseEv",
    "_ZN15PluginVoiceDesk21stopCurrentGroupAudioEi",
    "_ZN15PluginVoiceDesk8stopTalkEv",
    "_ZN15PluginVoiceDesk17stopTalkToIPAudioEi",
    "_ZN15PluginVoiceDesk16talkDisconnectedEv",
    "_ZNK15PluginVoiceDesk7talkingEv",
    "_ZN15PluginVoiceDesk14talkingChangedEv",
    "_ZN15PluginVoiceDesk14tst_setTalkingEb",
    "_ZN15PluginVoiceDesk13updateIPAudioEiRK7QStringS2_iS2_S2_RK11QStringList",
    "_ZN15PluginVoiceDesk21updateIPAudioResponseEbRK7QStringi",
    "_ZN15PluginVoiceDesk23updateNetworkAudioGroupEiRK7QStringRK8QVariant",
    "_ZN15PluginVoiceDesk31updateNetworkAudioGroupResponseEbRK7QStringi",
    "_ZN15PluginVoiceDesk26updateNetworkAudioScheduleEiRK4QMapI7QString8QVariantE",
    "_ZN15PluginVoiceDesk34updateNetworkAudioScheduleResponseEbRK7QStringi",
    "_ZN15PluginVoiceDesk10uploadFileERK4QUrl",
    "_ZN15PluginVoiceDeskD0Ev",
    "_ZN15PluginVoiceDeskD1Ev",
};

/** PluginVoiceDesk: what serves replies, events and captured packets. */
const char* const pluginHandlers[] = {
    "_ZN15PluginVoiceDesk20handleAddIPAudioDataE8QVariantPv7QStringS2_bRKS2_",
    "_ZN15PluginVoiceDesk26handleAddNetworkAudioGroupERK8QVariantRK7QString",
    "_ZN15PluginVoiceDesk29handleAddNetworkAudioScheduleERK8QVariantRK7QString",
    // NOLINTNEXTLINE(bugprone-suspicious-missing-comma)
    "_ZN15PluginVoiceDesk18handleAudioCaptureE" MANGLED_DWORD "10QByteArray",
    "_ZN15PluginVoiceDesk19handleAudioFileListE8QVariantPv7QString",
    "_ZN15PluginVoiceDesk19handleAudioReceivedERK8QVariant",
    "_ZN15PluginVoiceDesk23handleDeleteIPAudioDataE8QVariantPv7QStringS2_bRKS2_",
    "_ZN15PluginVoiceDesk29handleDeleteNetworkAudioGroupERK8QVariantRK7QString",
    "_ZN15PluginVoiceDesk32handleDeleteNetworkAudioScheduleERK8QVariantRK7QString",
    "_ZN15PluginVoiceDesk26handleGetNetworkAudioGroupERK8QVariantRK7QString",
    "_ZN15PluginVoiceDesk29handleGetNetworkAudioScheduleERK8QVariantRK7QString",
    "_ZN15PluginVoiceDesk15handlePlayAudioE8QVariantPv7QStringS2_bRKS2_",
    "_ZN15PluginVoiceDesk20handlePlayAudioErrorERK8QVariant",
    "_ZN15PluginVoiceDesk25handleRetrieveIPAudioDataE8QVariantPv7QStringS2_bRKS2_",
    "_ZN15PluginVoiceDesk18handleSendTalkDataE8QVariantPv7QStringS2_bRKS2_",
    "_ZN15PluginVoiceDesk15handleStartTalkE8QVariantPv7QStringS2_bRKS2_",
    "_ZN15PluginVoiceDesk24handleStartTalkToIPAudioE8QVariantPv7QStringS2_bRKS2_",
    "_ZN15PluginVoiceDesk22handleStopCurrentAudioE8QVariantPv7QStringS2_bRKS2_",
    "_ZN15PluginVoiceDesk14handleStopTalkE8QVariantPv7QStringS2_bRKS2_",
    "_ZN15PluginVoiceDesk23handleStopTalkToIPAudioE8QVariantPv7QStringS2_bRKS2_",
    "_ZN15PluginVoiceDesk22handleTalkDisconnectedERK8QVariant",
    "_ZN15PluginVoiceDesk23handleUpdateIPAudioDataE8QVariantPv7QStringS2_bRKS2_",
    "_ZN15PluginVoiceDesk29handleUpdateNetworkAudioGroupERK8QVariantRK7QString",
    "_ZN15PluginVoiceDesk32handleUpdateNetworkAudioScheduleERK8QVariantRK7QString",
};

/** FrameSmithWrapper: all operations, the private ones too, its signal and its meta-object. */
const char* const captureOperations[] = {
    "_ZN17FrameSmithWrapper14AudioCapturingEv",
    "_ZN17FrameSmithWrapper25CreateAudioCaptureChannelEv",
    "_ZN17FrameSmithWrapper25DeleteAudioCaptureChannelEv",
    "_ZN17FrameSmithWrapperC1Ev",
    "_ZN17FrameSmithWrapper7InitialEv",
    "_ZN17FrameSmithWrapper17ParseWaveToPacketEP20TMediaDataPacketInfoRK7QString",
    "_ZN17FrameSmithWrapper7ReleaseEv",
    "_ZN17FrameSmithWrapper5ResetEv",
    "_ZN17FrameSmithWrapper10SetMicMuteEb",
    "_ZN17FrameSmithWrapper12SetMicVolumeEi",
    "_ZN17FrameSmithWrapper17StartAudioCaptureEv",
    // NOLINTNEXTLINE(bugprone-suspicious-missing-comma)
    "_ZN17FrameSmithWrapper20StaticPacketCallbackEPvP20TMediaDataPacketInfo" MANGLED_DWORD,
    "_ZN17FrameSmithWrapper16StopAudioCaptureEv",
    // NOLINTNEXTLINE(bugprone-suspicious-missing-comma)
    "_ZN17FrameSmithWrapper13audioCapturedE" MANGLED_DWORD "10QByteArray",
    "_ZNK17FrameSmithWrapper10metaObjectEv",
    "_ZN17FrameSmithWrapper11qt_metacallEN11QMetaObject4CallEiPPv",
    "_ZN17FrameSmithWrapper11qt_metacastEPKc",
    "_ZN17FrameSmithWrapper16staticMetaObjectE",
    "_ZN17FrameSmithWrapperD0Ev",
    "_ZN17FrameSmithWrapperD1Ev",
};

/** AudioRenderer: its public operations. */
const char* const rendererOperations[] = {
    "_ZN13AudioRendererC1Ev",
    "_ZN13AudioRenderer4PlayERKN5boost13intrusive_ptrI23_TMediaDataPacketInfoV3EEb",
    "_ZN13AudioRenderer10SetAudioOnEb",
    "_ZN13AudioRenderer9SetVolumeEd",
    "_ZNK13AudioRenderer5stateEv",
    "_ZNK13AudioRenderer6volumeEv",
    "_ZN13AudioRendererD1Ev",
};

template<std::size_t Count>
void addRows(const char* const (&symbols)[Count])
{
    for (const char* symbol : symbols) {
        QTest::newRow(symbol) << QByteArray(symbol);
    }
}

QLibrary& library()
{
    static QLibrary loaded(BuiltLibraries::path("VoiceDesk"));
    return loaded;
}

} // namespace

void TestExports::operations_data()
{
    QTest::addColumn<QByteArray>("symbol");
    addRows(entryPoints);
    addRows(pluginOperations);
    addRows(pluginHandlers);
    addRows(captureOperations);
    addRows(rendererOperations);
}

void TestExports::operations()
{
#ifdef _MSC_VER
    QSKIP("another mangling");
#endif
    QFETCH(QByteArray, symbol);
    QVERIFY2(library().load(), qPrintable(library().errorString()));
    QVERIFY(library().resolve(symbol.constData()) != nullptr);
}

QTEST_GUILESS_MAIN(TestExports)
#include "tst_exports.moc"
