#pragma once

#include "tests/support/ChildProcess.h"
#include "tests/support/HostCommand.h"

#include <QByteArray>
#include <QString>
#include <QTemporaryDir>

#include <memory>

/**
 * A private PulseAudio server without hardware, for the program that makes it and its children: an output
 * "out" whose monitor can be recorded, and a microphone "virtmic" that speaks what is played to "mic". Ends
 * with the object. Under Wine, which reads the server's address as it starts, it is the one of
 * tests_with_sound.
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

    /** Runs pactl with these arguments; its output, which is empty when the server refuses. */
    QByteArray control(const QStringList& arguments) const;

    /** Speaks a WAV file into the microphone, in the background, until the returned object ends. */
    std::unique_ptr<HostCommand> speak(const QString& wavFile) const;

private:
    bool start();

    QTemporaryDir m_folder;
    ChildProcess m_server;
    bool m_ready = false;
};
