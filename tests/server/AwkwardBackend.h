#pragma once

#include "protocol/ServerReply.h"
#include "server/devices/DeviceKinds.h"

#include <QPointer>

#include <atomic>
#include <functional>
#include <memory>
#include <thread>
#include <vector>

/**
 * Cameras and speakers that do what simulated ones never do: they open late or not at all, refuse late, lose
 * their line, signal from other threads, and do not answer a close. A test drives each talk and playback by
 * hand, or sets what all do by themselves.
 */
struct AwkwardDevices;

/** Runs something on another thread, to its end. */
inline void onAnotherThread(const std::function<void()>& action)
{
    std::thread(action).join();
}

class AwkwardTalk : public DeviceTalk
{
public:
    explicit AwkwardTalk(std::shared_ptr<AwkwardDevices> devices) : m_devices(std::move(devices)) {}
    ~AwkwardTalk() override
    {
        m_ends = true;
        if (m_speaker.joinable()) {
            m_speaker.join();
        }
    }
    AwkwardTalk(const AwkwardTalk&) = delete;
    AwkwardTalk& operator=(const AwkwardTalk&) = delete;

    bool hear(const QByteArray& packet) override;
    void close() override;

    void open()
    {
        onAnotherThread([this] { Q_EMIT opened(); });
    }
    void refuse(const QString& returnCode, const QString& reason)
    {
        onAnotherThread([&] { Q_EMIT refused(returnCode, reason); });
    }
    void lose(const QString& reason = QStringLiteral("the line is cut"))
    {
        onAnotherThread([&] { Q_EMIT lost(reason); });
    }
    void speak(const VoicePacket& packet)
    {
        onAnotherThread([&] { Q_EMIT spoke(packet); });
    }
    /** Speaks a thousand packets a second, beside everything else, until its end. */
    void speakOn()
    {
        m_speaker = std::thread([this] {
            while (!m_ends) {
                Q_EMIT spoke(VoicePacket{QByteArray(640, 'x'), 8192, 8000});
                std::this_thread::sleep_for(std::chrono::milliseconds(1)); // its pace
            }
        });
    }

    int heard = 0; ///< Packets.
    int closes = 0;

private:
    std::shared_ptr<AwkwardDevices> m_devices;
    std::thread m_speaker;
    std::atomic<bool> m_ends = false;
};

class AwkwardPlayback : public SpeakerPlayback
{
public:
    AwkwardPlayback(std::shared_ptr<AwkwardDevices> devices, std::shared_ptr<SoundSource> sound,
                    QList<int> ids, SpeakerBackend::Time due)
        : source(std::move(sound)), speakers(std::move(ids)), start(due), m_devices(std::move(devices))
    {
    }

    void keepSpeakers(const QList<int>& kept) override;

    /** Takes so many samples of the sound; whether there are more. */
    bool take(std::size_t count)
    {
        bool more = false;
        std::vector<std::int16_t> samples;
        onAnotherThread([&] { more = source->read(count, samples); });
        return more;
    }
    void end()
    {
        onAnotherThread([this] { Q_EMIT ended(); });
    }
    void fail(int speaker, const QString& reason)
    {
        onAnotherThread([&] { Q_EMIT failed(speaker, reason); });
    }

    std::shared_ptr<SoundSource> source;
    QList<int> speakers;
    SpeakerBackend::Time start;

private:
    std::shared_ptr<AwkwardDevices> m_devices;
};

struct AwkwardDevices : std::enable_shared_from_this<AwkwardDevices>
{
    bool opens = false; ///< By itself.
    int losesAfter = 0; ///< Packets; 0 for never.
    bool answersClose = true;
    std::chrono::milliseconds leadTime{0}; ///< Of the speakers.
    QList<Camera> cameras;
    QList<CameraRecord> records;                      ///< As the server gave them last.
    std::vector<QPointer<AwkwardTalk>> talks;         ///< In the order in which they were asked for.
    std::vector<QPointer<AwkwardPlayback>> playbacks; ///< The same.
    QStringList passwords;                            ///< Of the speakers, with each talk and playback.
    int closedTalks = 0;                              ///< How often a talk was told to close.
    int stoppedPlaybacks = 0;                         ///< How often a playback was left without speakers.
    std::function<void()> change = [] {};             ///< Makes the back end say that its cameras changed.

    std::unique_ptr<DeviceTalk> makeTalk();
    DeviceKinds kinds();
};

inline bool AwkwardTalk::hear(const QByteArray& /*packet*/)
{
    if (++heard == m_devices->losesAfter) {
        Q_EMIT lost(QStringLiteral("the line is cut")); // inside the call
    }
    return true;
}

inline void AwkwardTalk::close()
{
    ++closes;
    ++m_devices->closedTalks;
    if (m_devices->answersClose) {
        Q_EMIT closed(); // inside the call
    }
}

inline void AwkwardPlayback::keepSpeakers(const QList<int>& kept)
{
    speakers = kept;
    m_devices->stoppedPlaybacks += kept.isEmpty() ? 1 : 0;
}

class AwkwardCameras : public CameraBackend
{
public:
    explicit AwkwardCameras(std::shared_ptr<AwkwardDevices> devices) : m_devices(std::move(devices))
    {
        m_devices->change = [self = QPointer<AwkwardCameras>(this)] {
            if (self) {
                onAnotherThread([&] { Q_EMIT self->camerasChanged(); });
            }
        };
    }
    void setRecords(const QList<CameraRecord>& records) override { m_devices->records = records; }
    QList<Camera> cameras() const override { return m_devices->cameras; }
    std::unique_ptr<DeviceTalk> openTalk(const QString& /*camera*/) override { return m_devices->makeTalk(); }

private:
    std::shared_ptr<AwkwardDevices> m_devices;
};

/** Serves addresses that begin with 10.9. */
class AwkwardSpeakers : public SpeakerBackend
{
public:
    explicit AwkwardSpeakers(std::shared_ptr<AwkwardDevices> devices) : m_devices(std::move(devices)) {}
    bool serves(const Speaker& speaker) const override
    {
        return speaker.address.startsWith(QLatin1String("10.9."));
    }
    bool isOnline(const Speaker& /*speaker*/) const override { return true; }
    std::chrono::milliseconds leadTime() const override { return m_devices->leadTime; }
    std::unique_ptr<DeviceTalk> openTalk(const Speaker& speaker) override
    {
        m_devices->passwords.append(speaker.password);
        return m_devices->makeTalk();
    }
    std::unique_ptr<SpeakerPlayback> play(std::shared_ptr<SoundSource> source, const QList<Speaker>& speakers,
                                          Time start) override
    {
        QList<int> ids;
        for (const Speaker& speaker : speakers) {
            ids.append(speaker.id);
            m_devices->passwords.append(speaker.password);
        }
        auto playback = std::make_unique<AwkwardPlayback>(m_devices, std::move(source), ids, start);
        m_devices->playbacks.emplace_back(playback.get());
        return playback;
    }

private:
    std::shared_ptr<AwkwardDevices> m_devices;
};

inline std::unique_ptr<DeviceTalk> AwkwardDevices::makeTalk()
{
    auto talk = std::make_unique<AwkwardTalk>(shared_from_this());
    talks.emplace_back(talk.get());
    if (opens) {
        QMetaObject::invokeMethod(talk.get(), &DeviceTalk::opened, Qt::QueuedConnection);
    }
    return talk;
}

inline DeviceKinds AwkwardDevices::kinds()
{
    const QString name = QStringLiteral("awkward");
    const auto self = shared_from_this();
    return {{{name, [self] { return std::make_unique<AwkwardCameras>(self); }}},
            {{name, [self] { return std::make_unique<AwkwardSpeakers>(self); }}}};
}
