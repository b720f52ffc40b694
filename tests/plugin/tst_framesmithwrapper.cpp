#include "src/FrameSmithWrapper.h"
#include "tests/support/FakeFrameSmith.h"
#include "tests/support/LogCapture.h"

#include <QSignalSpy>
#include <QTest>
#include <QThread>
#include <QtEndian>

#include <array>
#include <cstring>

class TestFrameSmithWrapper : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void construction();
    void constructionWithADeadLibrary();
    void captureOptions();
    void startAndStop();
    void startWhileCapturing();
    void stopWhileNotCapturing();
    void startWithoutAChannel();
    void captureWithoutAChannel();
    void handlesOfTheCalls();
    void startSetsVolumeAndMuteThroughTheTable();
    void failedStartLeavesAStaleChannel();
    void failedStop();
    void volumeAndMuteBeforeCapture();
    void volumeAndMuteFailures();
    void volumeIsNotLimited();
    void destructionOrder();
    void destructionWhileCapturing();
    void callbackCopiesThePacket();
    void callbackAnnouncesThePacketFirst();
    void callbackPaces_data();
    void callbackPaces();
    void callbackWithoutAContext();
    void callbackWithBrokenRecords();
    void queuedDeliveryByName();
};

void TestFrameSmithWrapper::init()
{
    FakeFrameSmith::reset();
}

void TestFrameSmithWrapper::construction()
{
    const FrameSmithWrapper wrapper;
    const auto calls = FakeFrameSmith::calls();
    QCOMPARE(FakeFrameSmith::functions(), (QStringList{"FrameSmith_Initial", "FrameSmith_CreateChannel"}));
    QCOMPARE(calls[0].arguments, (std::vector<qint64>{0, 0x5000302}));
    std::array<quint32, 6> options{};
    QCOMPARE(calls[1].options.size(), 24);
    std::memcpy(options.data(), calls[1].options.constData(), 24);
    QCOMPARE(options, (std::array<quint32, 6>{7, 8192, 8000, 1, 1, 640}));
}

void TestFrameSmithWrapper::constructionWithADeadLibrary()
{
    FakeFrameSmith::fail("FrameSmith_Initial", -1);
    FakeFrameSmith::fail("FrameSmith_CreateChannel", -1);
    FakeFrameSmith::fail("FrameSmith_CreateAudioCaptureChannel", -1);
    LogCapture log;
    {
        FrameSmithWrapper wrapper;
        QVERIFY(log.errors().isEmpty());
        QVERIFY(!wrapper.StartAudioCapture());
        QCOMPARE(log.errors(),
                 QStringList{"FrameSmithWrapper::StartAudioCapture, create audio capture channel failed"});
    }
    QVERIFY(!FakeFrameSmith::functions().contains("FrameSmith_Release"));
}

void TestFrameSmithWrapper::captureOptions()
{
    FrameSmithWrapper wrapper;
    QVERIFY(wrapper.StartAudioCapture());
    const QByteArray bytes = FakeFrameSmith::calls()[2].options;
    QCOMPARE(FakeFrameSmith::calls()[2].function, QStringLiteral("FrameSmith_CreateAudioCaptureChannel"));
    QCOMPARE(bytes.size(), 64);
    const auto u32 = [&bytes](int offset) { return qFromLittleEndian<quint32>(bytes.constData() + offset); };
    QCOMPARE(u32(0), 0U);
    QCOMPARE(u32(4), 8192U);
    QCOMPARE(u32(8), 8000U);
    QCOMPARE(u32(12), 1U);
    QCOMPARE(u32(16), 1U);
    QCOMPARE(u32(20), 640U);
    QCOMPARE(u32(24), 16U);
    QCOMPARE(bytes.mid(28, 12), QByteArray(12, 0));
    void* context = nullptr;
    std::memcpy(&context, bytes.constData() + 40, sizeof context);
    QCOMPARE(context, static_cast<void*>(&wrapper));
    QCOMPARE(bytes.mid(48, 8), QByteArray(8, 0));
    QVERIFY(bytes.mid(56, 8) != QByteArray(8, 0));
}

void TestFrameSmithWrapper::startAndStop()
{
    FrameSmithWrapper wrapper;
    QVERIFY(!wrapper.AudioCapturing());
    FakeFrameSmith::clearCalls();
    QVERIFY(wrapper.StartAudioCapture());
    QVERIFY(wrapper.AudioCapturing());
    QCOMPARE(FakeFrameSmith::functions(),
             (QStringList{"FrameSmith_CreateAudioCaptureChannel", "FrameSmith_UpdateChannelSettings",
                          "FrameSmith_SetAudioCaptureChannelOption", "FrameSmith_StartAudioCapture"}));
    QCOMPARE(FakeFrameSmith::calls()[1].arguments, (std::vector<qint64>{1, 50, 0}));
    QCOMPARE(FakeFrameSmith::calls()[2].arguments, (std::vector<qint64>{6, 0, 0}));
    FakeFrameSmith::clearCalls();
    wrapper.StopAudioCapture();
    QVERIFY(!wrapper.AudioCapturing());
    QCOMPARE(FakeFrameSmith::functions(),
             (QStringList{"FrameSmith_StopAudioCapture", "FrameSmith_DeleteAudioCaptureChannel"}));
}

void TestFrameSmithWrapper::startWhileCapturing()
{
    FrameSmithWrapper wrapper;
    wrapper.StartAudioCapture();
    FakeFrameSmith::clearCalls();
    QVERIFY(wrapper.StartAudioCapture());
    QVERIFY(FakeFrameSmith::functions().isEmpty());
}

void TestFrameSmithWrapper::stopWhileNotCapturing()
{
    LogCapture log;
    FrameSmithWrapper wrapper;
    FakeFrameSmith::clearCalls();
    wrapper.StopAudioCapture();
    QVERIFY(FakeFrameSmith::functions().isEmpty());
    QVERIFY(log.messages().isEmpty());
}

void TestFrameSmithWrapper::startWithoutAChannel()
{
    LogCapture log;
    FrameSmithWrapper wrapper;
    FakeFrameSmith::fail("FrameSmith_CreateAudioCaptureChannel", -3);
    QVERIFY(!wrapper.StartAudioCapture());
    QVERIFY(!wrapper.AudioCapturing());
    QCOMPARE(log.errors(),
             QStringList{"FrameSmithWrapper::StartAudioCapture, create audio capture channel failed"});
    QVERIFY(!FakeFrameSmith::functions().contains("FrameSmith_StartAudioCapture"));
}

void TestFrameSmithWrapper::captureWithoutAChannel()
{
    // No error and no channel: capture counts as running, and there is nothing to set, start or stop.
    LogCapture log;
    FrameSmithWrapper wrapper;
    FakeFrameSmith::withholdCaptureChannel();
    FakeFrameSmith::clearCalls();
    QVERIFY(wrapper.StartAudioCapture());
    QVERIFY(wrapper.AudioCapturing());
    wrapper.StopAudioCapture();
    QVERIFY(!wrapper.AudioCapturing());
    QCOMPARE(FakeFrameSmith::functions(), QStringList{"FrameSmith_CreateAudioCaptureChannel"});
    QVERIFY(log.messages().isEmpty());
}

void TestFrameSmithWrapper::handlesOfTheCalls()
{
    void* captureChannel = nullptr;
    void* packetChannel = nullptr;
    std::vector<FakeFrameSmith::Call> calls;
    {
        FrameSmithWrapper wrapper;
        wrapper.StartAudioCapture();
        wrapper.SetMicVolume(10);
        wrapper.SetMicMute(true);
        captureChannel = FakeFrameSmith::calls().back().handle;
        wrapper.StopAudioCapture();
        wrapper.StartAudioCapture();
        wrapper.StopAudioCapture();
        calls = FakeFrameSmith::calls();
        FakeFrameSmith::clearCalls();
    }
    packetChannel = FakeFrameSmith::calls().front().handle;
    void* library = FakeFrameSmith::calls().back().handle;
    QVERIFY(library != nullptr && captureChannel != nullptr && packetChannel != nullptr);
    QVERIFY(library != captureChannel && library != packetChannel && captureChannel != packetChannel);
    QCOMPARE(calls[1].function, QStringLiteral("FrameSmith_CreateChannel"));
    QCOMPARE(calls[1].handle, library);
    void* current = nullptr; // the capture channel of the calls that follow
    for (std::size_t i = 2; i < calls.size(); ++i) {
        if (calls[i].function == QLatin1String("FrameSmith_CreateAudioCaptureChannel")) {
            QCOMPARE(calls[i].handle, library);
            current = i < 8 ? captureChannel : nullptr;
            continue;
        }
        if (current == nullptr) {
            current = calls[i].handle;
            QVERIFY(current != nullptr && current != captureChannel && current != packetChannel);
        }
        QVERIFY2(calls[i].handle == current, qPrintable(calls[i].function));
    }
}

void TestFrameSmithWrapper::startSetsVolumeAndMuteThroughTheTable()
{
    struct Wrapper : FrameSmithWrapper
    {
        void SetMicVolume(int volume) override { set << QStringLiteral("volume %1").arg(volume); }
        void SetMicMute(bool mute) override { set << QStringLiteral("mute %1").arg(mute); }
        QStringList set;
    };
    Wrapper wrapper;
    QVERIFY(wrapper.StartAudioCapture());
    QCOMPARE(wrapper.set, (QStringList{"volume 50", "mute 0"}));
    QVERIFY(!FakeFrameSmith::functions().contains("FrameSmith_UpdateChannelSettings"));
    QVERIFY(!FakeFrameSmith::functions().contains("FrameSmith_SetAudioCaptureChannelOption"));
}

void TestFrameSmithWrapper::failedStartLeavesAStaleChannel()
{
    LogCapture log;
    FrameSmithWrapper wrapper;
    FakeFrameSmith::fail("FrameSmith_StartAudioCapture", -5);
    QVERIFY(!wrapper.StartAudioCapture());
    QVERIFY(!wrapper.AudioCapturing());
    QCOMPARE(log.errors(),
             QStringList{"FrameSmithWrapper::StartAudioCapture, start audio capture channel failed"});
    QVERIFY(!FakeFrameSmith::functions().contains("FrameSmith_DeleteAudioCaptureChannel"));
    void* stale = FakeFrameSmith::calls().back().handle;
    FakeFrameSmith::fail("FrameSmith_StartAudioCapture", 0);
    FakeFrameSmith::clearCalls();
    QVERIFY(wrapper.StartAudioCapture());
    QCOMPARE(FakeFrameSmith::calls()[0].function, QStringLiteral("FrameSmith_DeleteAudioCaptureChannel"));
    QCOMPARE(FakeFrameSmith::calls()[0].handle, stale);
    QCOMPARE(FakeFrameSmith::calls()[1].function, QStringLiteral("FrameSmith_CreateAudioCaptureChannel"));
    QVERIFY(FakeFrameSmith::calls().back().handle != stale);
}

void TestFrameSmithWrapper::failedStop()
{
    LogCapture log;
    FrameSmithWrapper wrapper;
    wrapper.StartAudioCapture();
    FakeFrameSmith::fail("FrameSmith_StopAudioCapture", -4);
    wrapper.StopAudioCapture();
    QCOMPARE(log.errors(),
             QStringList{"FrameSmithWrapper::StopAudioCapture, stop audio capture channel failed"});
    QCOMPARE(FakeFrameSmith::functions().last(), QStringLiteral("FrameSmith_DeleteAudioCaptureChannel"));
    QVERIFY(!wrapper.AudioCapturing());
}

void TestFrameSmithWrapper::volumeAndMuteBeforeCapture()
{
    LogCapture log;
    FrameSmithWrapper wrapper;
    FakeFrameSmith::clearCalls();
    wrapper.SetMicVolume(30);
    wrapper.SetMicMute(true);
    QCOMPARE(log.errors(),
             (QStringList{"FrameSmithWrapper::SetMicVolume, set audio capture channel did not create",
                          "FrameSmithWrapper::SetMicMute, set audio capture channel did not create"}));
    QVERIFY(FakeFrameSmith::functions().isEmpty());
    wrapper.StartAudioCapture();
    QCOMPARE(FakeFrameSmith::calls()[1].arguments, (std::vector<qint64>{1, 30, 0}));
    QCOMPARE(FakeFrameSmith::calls()[2].arguments, (std::vector<qint64>{6, 1, 0}));
}

void TestFrameSmithWrapper::volumeAndMuteFailures()
{
    LogCapture log;
    FrameSmithWrapper wrapper;
    wrapper.StartAudioCapture();
    FakeFrameSmith::fail("FrameSmith_UpdateChannelSettings", -1);
    FakeFrameSmith::fail("FrameSmith_SetAudioCaptureChannelOption", -1);
    wrapper.SetMicVolume(30);
    wrapper.SetMicMute(true);
    QCOMPARE(log.errors(),
             (QStringList{"FrameSmithWrapper::SetMicVolume, set audio capture channel volume failed",
                          "FrameSmithWrapper::SetMicMute, set audio capture channel mute failed"}));
    FakeFrameSmith::fail("FrameSmith_UpdateChannelSettings", 0);
    FakeFrameSmith::fail("FrameSmith_SetAudioCaptureChannelOption", 0);
    wrapper.StopAudioCapture();
    FakeFrameSmith::clearCalls();
    QVERIFY(wrapper.StartAudioCapture()); // the values were kept
    QCOMPARE(FakeFrameSmith::calls()[1].arguments, (std::vector<qint64>{1, 30, 0}));
    QCOMPARE(FakeFrameSmith::calls()[2].arguments, (std::vector<qint64>{6, 1, 0}));
}

void TestFrameSmithWrapper::volumeIsNotLimited()
{
    FrameSmithWrapper wrapper;
    wrapper.StartAudioCapture();
    wrapper.SetMicVolume(250);
    QCOMPARE(FakeFrameSmith::calls().back().arguments, (std::vector<qint64>{1, 250, 0}));
}

void TestFrameSmithWrapper::destructionOrder()
{
    {
        const FrameSmithWrapper wrapper;
        FakeFrameSmith::clearCalls();
    }
    QCOMPARE(FakeFrameSmith::functions(), (QStringList{"FrameSmith_DeleteChannel", "FrameSmith_Release"}));
}

void TestFrameSmithWrapper::destructionWhileCapturing()
{
    {
        FrameSmithWrapper wrapper;
        wrapper.StartAudioCapture();
        FakeFrameSmith::clearCalls();
    }
    QCOMPARE(FakeFrameSmith::functions(),
             (QStringList{"FrameSmith_DeleteChannel", "FrameSmith_DeleteAudioCaptureChannel",
                          "FrameSmith_Release"}));
}

void TestFrameSmithWrapper::callbackCopiesThePacket()
{
    FrameSmithWrapper wrapper;
    wrapper.StartAudioCapture();
    QSignalSpy captured(&wrapper, &FrameSmithWrapper::audioCaptured);
    QByteArray packet(660, 'b');
    packet.replace(0, 20, QByteArray(20, 'h'));
    const auto delivery = FakeFrameSmith::deliver(packet, 20, 8192, 0);
    QCOMPARE(delivery.result, 0U);
    QCOMPARE(captured.count(), 1);
    QCOMPARE(captured[0][0].toUInt(), 8192U);
    QCOMPARE(captured[0][1].toByteArray(), packet);
}

void TestFrameSmithWrapper::callbackAnnouncesThePacketFirst()
{
    FrameSmithWrapper wrapper;
    wrapper.StartAudioCapture();
    std::chrono::steady_clock::time_point heard;
    connect(
        &wrapper, &FrameSmithWrapper::audioCaptured, &wrapper,
        [&heard] { heard = std::chrono::steady_clock::now(); }, Qt::DirectConnection);
    FakeFrameSmith::deliver(QByteArray(660, 'x'), 20, 8192, 330);
    const auto waited = std::chrono::steady_clock::now() - heard;
    QVERIFY(waited >= std::chrono::milliseconds(299)); // all of the wait comes behind the signal
}

void TestFrameSmithWrapper::callbackPaces_data()
{
    QTest::addColumn<unsigned>("delay");
    QTest::addColumn<int>("atLeast"); // ms
    QTest::newRow("0 does not sleep") << 0U << 0;
    QTest::newRow("1 truncates to 0") << 1U << 0;
    QTest::newRow("2 truncates to 1") << 2U << 1;
    QTest::newRow("80 sleeps 72") << 80U << 72;
    QTest::newRow("200 sleeps 181") << 200U << 181;
}

void TestFrameSmithWrapper::callbackPaces()
{
    QFETCH(unsigned, delay);
    QFETCH(int, atLeast);
    FrameSmithWrapper wrapper;
    wrapper.StartAudioCapture();
    // The upper bound tells sleeping too long from a busy machine: the best of some turns counts.
    auto shortest = std::chrono::nanoseconds::max();
    for (int turn = 0; turn < 20; ++turn) {
        const auto delivery = FakeFrameSmith::deliver(QByteArray(660, 'x'), 20, 8192, delay);
        QVERIFY(delivery.duration >= std::chrono::milliseconds(atLeast));
        shortest = std::min(shortest, delivery.duration);
        if (shortest < std::chrono::milliseconds(atLeast + 1)) {
            break;
        }
    }
    const auto limit = std::chrono::milliseconds(atLeast) +
                       (delay <= 1 ? std::chrono::microseconds(900) : std::chrono::microseconds(7000));
    QVERIFY2(shortest < limit, qPrintable(QString::number(shortest.count())));
}

void TestFrameSmithWrapper::callbackWithoutAContext()
{
    FrameSmithWrapper wrapper;
    wrapper.StartAudioCapture();
    QSignalSpy captured(&wrapper, &FrameSmithWrapper::audioCaptured);
    QByteArray packet(660, 'x');
    TMediaDataPacketInfo record{};
    record.Buffer = reinterpret_cast<std::uint8_t*>(packet.data());
    record.BitstreamSize = 660;
    const auto delivery = FakeFrameSmith::deliver(nullptr, &record, 10000);
    QCOMPARE(delivery.result, 0U);
    QVERIFY(delivery.duration < std::chrono::seconds(5)); // nobody to pace
    QCOMPARE(captured.count(), 0);
}

void TestFrameSmithWrapper::callbackWithBrokenRecords()
{
    FrameSmithWrapper wrapper;
    wrapper.StartAudioCapture();
    QSignalSpy captured(&wrapper, &FrameSmithWrapper::audioCaptured);
    QCOMPARE(FakeFrameSmith::deliver(&wrapper, nullptr, 0).result, 0U);
    QCOMPARE(captured.count(), 0);
    TMediaDataPacketInfo record{};
    record.BitstreamSize = 100; // no buffer
    FakeFrameSmith::deliver(&wrapper, &record, 0);
    std::uint8_t byte = 0;
    record.Buffer = &byte;
    record.Offset = 0xFFFFFFFF; // sizes that no byte array has, and whose 32-bit sum is small
    record.BitstreamSize = 2;
    FakeFrameSmith::deliver(&wrapper, &record, 0);
    QCOMPARE(captured.count(), 2);
    QVERIFY(captured[0][1].toByteArray().isEmpty());
    QVERIFY(captured[1][1].toByteArray().isEmpty());
}

/** Hears audioCaptured through a connection by name, as a host would make it. */
class Listener : public QObject
{
    Q_OBJECT

public:
    quint32 type = 0;
    QByteArray packet;
    QThread* thread = nullptr;

public Q_SLOTS:
    void heard(DWORD streamType, QByteArray dataBuffer)
    {
        type = streamType;
        packet = dataBuffer;
        thread = QThread::currentThread();
    }
};

void TestFrameSmithWrapper::queuedDeliveryByName()
{
    FrameSmithWrapper wrapper;
    QCOMPARE(QMetaType::sizeOf(QMetaType::type("DWORD")), 4);
    Listener listener;
    QVERIFY(connect(&wrapper, SIGNAL(audioCaptured(DWORD, QByteArray)), &listener,
                    SLOT(heard(DWORD, QByteArray))));
    wrapper.StartAudioCapture();
    FakeFrameSmith::deliver(QByteArray(660, 'x'), 20, 0xFEDCBA98, 0);
    QVERIFY(listener.packet.isEmpty());
    QTRY_COMPARE(listener.packet, QByteArray(660, 'x'));
    QCOMPARE(listener.type, 0xFEDCBA98U);
    QCOMPARE(listener.thread, QThread::currentThread());
}

QTEST_GUILESS_MAIN(TestFrameSmithWrapper)
#include "tst_framesmithwrapper.moc"
