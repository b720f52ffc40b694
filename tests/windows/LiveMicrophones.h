#pragma once

#include <memory>

/**
 * Keeps this process's list of microphones true while the sound server's come and go. Windows does so by
 * itself; but Wine looks for sound devices once in the life of a process, so the number is what a fresh
 * process sees, again and again. From construction to destruction, for this whole process.
 */
class LiveMicrophones
{
public:
    LiveMicrophones();
    ~LiveMicrophones();
    LiveMicrophones(const LiveMicrophones&) = delete;
    LiveMicrophones& operator=(const LiveMicrophones&) = delete;

    /** How many there are, as far as this process can know by now. */
    int count() const;

private:
    struct Private;
    std::unique_ptr<Private> m_private;
};
