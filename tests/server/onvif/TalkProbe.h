#pragma once

#include "audio/G711.h"
#include "audio/PacketHeader.h"
#include "server/devices/onvif/OnvifCameras.h"
#include "tests/server/onvif/TestCamera.h"

#include <QCoreApplication>

#include <cmath>

/** Talks to one camera without a server around it: says speech-like sound, and keeps what comes back. */
struct TalkProbe
{
    explicit TalkProbe(const QString& address, const CameraSettings& settings = CameraSettings(),
                       const QString& user = QString(), const QString& password = QString(),
                       const OnvifConfig& config = OnvifConfig())
        : cameras(withoutPresence(config))
    {
        cameras.setRecords({{"1", "Gate", onvifKind(), address, user, password, settings}});
        clock.start();
        talk = cameras.openTalk("1");
        QObject::connect(talk.get(), &DeviceTalk::opened, &context,
                         [this] { openedAfter = clock.elapsed(); });
        QObject::connect(talk.get(), &DeviceTalk::refused, &context,
                         [this](const QString& code, const QString& text) {
                             refusedAfter = clock.elapsed();
                             returnCode = code;
                             reason = text;
                         });
        QObject::connect(talk.get(), &DeviceTalk::lost, &context, [this](const QString& text) {
            lostAfter = clock.elapsed();
            reason = text;
        });
        QObject::connect(talk.get(), &DeviceTalk::spoke, &context,
                         [this](const VoicePacket& packet) { heard.push_back(packet); });
        QObject::connect(talk.get(), &DeviceTalk::closed, &context, [this] { isClosed = true; });
    }

    /** Settings for a transport. */
    static CameraSettings over(bool udp)
    {
        CameraSettings settings;
        settings.transport = udp ? CameraTransport::Udp : CameraTransport::Tcp;
        return settings;
    }

    /** Else the camera has connections that are not of the talk. */
    static OnvifConfig withoutPresence(OnvifConfig config)
    {
        config.presence.period = std::chrono::milliseconds(0);
        return config;
    }

    template<class Condition>
    static bool waitFor(Condition condition, int timeout = 15000)
    {
        QElapsedTimer waited;
        waited.start();
        while (!condition()) {
            if (waited.elapsed() > timeout) {
                return false;
            }
            QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents, 5);
            QTest::qSleep(1);
        }
        return true;
    }

    bool open()
    {
        return waitFor([this] { return openedAfter >= 0 || refusedAfter >= 0; }) && openedAfter >= 0;
    }
    bool refuse()
    {
        return waitFor([this] { return openedAfter >= 0 || refusedAfter >= 0; }) && refusedAfter >= 0;
    }
    bool lose(int timeout = 15000)
    {
        return waitFor([this] { return lostAfter >= 0; }, timeout);
    }
    bool close()
    {
        talk->close();
        return waitFor([this] { return isClosed; });
    }

    /** A sample of a sound that is like itself at no other place: 8000 Hz. */
    static std::int16_t soundAt(std::uint32_t position)
    {
        const double pi = 3.14159265358979323846;
        const double t = position / 8000.0;
        const double burst = std::fmod(t, 0.7) < 0.45 ? 1 : 0;
        return static_cast<std::int16_t>(burst * 6000 *
                                         (std::sin(2 * pi * (300 + 170 * std::fmod(t * 1.3, 5)) * t) +
                                          0.6 * std::sin(2 * pi * (900 + 211 * std::fmod(t * 0.7, 7)) * t)));
    }

    static WavFiles::Samples sound(std::size_t count)
    {
        WavFiles::Samples samples(count);
        for (std::size_t i = 0; i < count; ++i) {
            samples[i] = soundAt(static_cast<std::uint32_t>(i));
        }
        return samples;
    }

    static QByteArray packet(std::uint32_t position, const QByteArray& muLaw)
    {
        PacketHeader header;
        header.channels = 1;
        header.streamType = 8192;
        header.sampleRate = 8000;
        header.position = position;
        const auto bytes = header.toBytes();
        return QByteArray(reinterpret_cast<const char*>(bytes.data()), static_cast<int>(bytes.size())) +
               muLaw;
    }

    /** Says the sound at its pace, in packets of 80 ms, from where it ended last. */
    bool say(int packets)
    {
        bool taken = true;
        due = saidAt.empty() ? clock.elapsed() : due;
        for (int i = 0; i < packets; ++i) {
            std::vector<std::int16_t> samples;
            for (int n = 0; n < 640; ++n) {
                samples.push_back(soundAt(position + static_cast<std::uint32_t>(n)));
            }
            saidAt.push_back(microseconds());
            taken = talk->hear(packet(position, G711::encodeMuLaw(samples))) && taken;
            position += 640;
            due += 80;
            due = std::max(due, clock.elapsed() - 40);
            waitFor([this] { return clock.elapsed() >= due; });
        }
        return taken;
    }

    static qint64 microseconds()
    {
        return std::chrono::duration_cast<std::chrono::microseconds>(
                   std::chrono::steady_clock::now().time_since_epoch())
            .count();
    }

    OnvifCameras cameras;
    QObject context;
    std::unique_ptr<DeviceTalk> talk;
    QElapsedTimer clock;
    qint64 openedAfter = -1, refusedAfter = -1, lostAfter = -1; ///< ms since the request.
    QString returnCode, reason;
    std::vector<VoicePacket> heard;
    std::vector<qint64> saidAt; ///< Of each packet, microseconds of the steady clock.
    bool isClosed = false;
    std::uint32_t position = 0;
    qint64 due = 0;
};
