#pragma once

#include "server/devices/CameraBackend.h"
#include "server/devices/onvif/OnvifConfig.h"

#include <QElapsedTimer>

#include <memory>
#include <optional>

struct CameraAbilities;
class LineThreads;
class OnvifDevice;

/**
 * A talk with a camera of the records, by whatever address the record has: the stream of a device service is
 * found by ONVIF before the line is opened, and a camera that refuses the line is asked why.
 *
 *   address of a service --> OnvifDevice --> stream --.
 *   URL of a stream ----------------------------------+--> OnvifTalk --> opened
 *                                                           '--> refused --> OnvifDevice --> refused
 *
 * All of it has the time that the camera's settings give to the opening. Used on the server's thread, on
 * which all signals are emitted.
 */
class LocatedTalk : public DeviceTalk
{
    Q_OBJECT

public:
    /**
     * Starts to open the talk.
     *
     * @param threads outlive the talk, and run the line
     * @param stream  the address that was located before; empty for none. One that does not work is located
     *                again
     */
    LocatedTalk(CameraRecord camera, OnvifConfig config, LineThreads& threads, const QString& stream);
    ~LocatedTalk() override;

    bool hear(const QByteArray& packet) override;
    void close() override;

    /** Returns whether an address is the URL of a stream. */
    static bool isStream(const QString& address);

Q_SIGNALS:
    /** The stream of the camera has this address; empty when it has no longer the one that was known. */
    void located(const QString& stream);

private:
    template<class Take>
    void ask(int time, Take take);
    void locate();
    void takeStream(const CameraAbilities& abilities);
    void openLine(const QString& stream);
    void takeRefusal(const QString& returnCode, const QString& reason);
    void explain(const CameraAbilities& abilities, const QString& returnCode, const QString& reason);
    int remaining() const;

    const CameraRecord m_camera;
    const OnvifConfig m_config;
    LineThreads& m_threads;
    QElapsedTimer m_clock; ///< Since the request.
    bool m_wasKnown;       ///< The stream's address is of an earlier talk.
    QString m_stream;      ///< Of the line.
    std::unique_ptr<OnvifDevice> m_device;
    std::unique_ptr<CameraAbilities> m_abilities; ///< Once the camera was asked.
    std::unique_ptr<DeviceTalk> m_line;
    int m_lineNumber = 0; ///< Of the line; signals of earlier ones may still be on their way.
    bool m_closing = false;
    bool m_lineClosed = false;
};
