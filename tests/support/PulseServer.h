#pragma once

#include <QByteArray>
#include <QProcess>
#include <QString>
#include <QTemporaryDir>

#include <memory>

/**
 * A private PulseAudio server without hardware, for the program that makes it and its children: an output
 * "out" whose monitor can be recorded, and a microphone "virtmic" that speaks what is played to "mic". Ends
 * with the object.
 */
class PulseServer
{
public:
    /** Starts the server and points this process at it; ready says whether that worked. */
    PulseServer();
    ~PulseServer();
    PulseServer(const PulseServer&) = delete;
    PulseServer& operator=(const PulseServer&) = delete;

    bool ready() const { return m_ready; }

    /** Runs pactl with these arguments; its output, empty on failure. */
    QByteArray control(const QStringList& arguments) const;

    /** Speaks a WAV file into the microphone, in the background; the process ends with the returned object.
     */
    std::unique_ptr<QProcess> speak(const QString& wavFile) const;

private:
    QTemporaryDir m_folder;
    QProcess m_server;
    bool m_ready = false;
};
