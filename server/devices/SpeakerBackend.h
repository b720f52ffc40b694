#pragma once

#include "server/devices/DeviceTalk.h"

#include <QList>

#include <chrono>
#include <cstdint>
#include <memory>
#include <vector>

/** A network speaker, as the server's records have it. */
struct Speaker
{
    int id = 0;       ///< Of the record.
    QString name;     ///< For people.
    QString address;  ///< IPv4, IPv6 or a host name.
    int port = 0;     ///< 1 to 65535.
    QString username; ///< Of its login.
    QString password; ///< Of its login; empty where nobody logs in.
};

/** Sound that a back end takes when it needs some: 16-bit mono. Used by one thread at a time, any one. */
class SoundSource
{
public:
    static constexpr int sampleRate = 16000; ///< Hz

    virtual ~SoundSource() = default;

    /** Appends up to so many samples; false when there will be no more. */
    virtual bool read(std::size_t count, std::vector<std::int16_t>& out) = 0;
};

/**
 * A sound on some speakers, in step. All calls are on the server's thread and return at once; signals may
 * come from another thread, the first after the call that made it has returned. Its destruction stops what
 * still plays, without waiting.
 */
class SpeakerPlayback : public QObject
{
    Q_OBJECT

public:
    /** Goes on with these of its speakers alone. @param speakers their ids, none of them new; empty to stop
     */
    virtual void keepSpeakers(const QList<int>& speakers) = 0;

Q_SIGNALS:
    /** The source had no more sound, and all of it is on its way. */
    void ended();

    /** One speaker does not play it, or does not any more. @param speaker its id @param reason for people */
    void failed(int speaker, const QString& reason);
};

/**
 * All speakers of one kind. All calls are on the server's thread and return at once. Talks and playbacks end
 * before their back end.
 */
class SpeakerBackend : public QObject
{
    Q_OBJECT

public:
    /** A moment of the clock that all back ends share. */
    using Time = std::chrono::steady_clock::time_point;

    /** Returns whether a speaker is one of this kind, by its address. */
    virtual bool serves(const Speaker& speaker) const = 0;

    /** Returns whether one of its speakers is online, as far as the back end knows. */
    virtual bool isOnline(const Speaker& speaker) const = 0;

    /** Starts to open a talk. @return never null; the talk's signals report how it goes */
    virtual std::unique_ptr<DeviceTalk> openTalk(const Speaker& speaker) = 0;

    /**
     * Returns how long before the first sample its speakers must know of a playback, to play it in step with
     * those of other back ends.
     */
    virtual std::chrono::milliseconds leadTime() const { return std::chrono::milliseconds(0); }

    /**
     * Starts to play a sound on some speakers.
     *
     * @param start when the first sample is due, so that several back ends play in step; at least leadTime
     * from now
     * @return never null; its signals report how it goes
     */
    virtual std::unique_ptr<SpeakerPlayback> play(std::shared_ptr<SoundSource> source,
                                                  const QList<Speaker>& speakers, Time start) = 0;
};
