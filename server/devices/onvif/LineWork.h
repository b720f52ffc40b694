#pragma once

#include <QString>

/** A line to a camera that works on a thread of its own, to its end. */
class LineWork
{
public:
    virtual ~LineWork() = default;

    /** Opens the line, keeps it until close or a loss, and closes it; on its own thread. */
    virtual void run() = 0;

    /** Starts to close the line. Any thread. */
    virtual void close() = 0;

    /** No call of its listener is under way, or comes, when it returns. Any thread but the line's. */
    virtual void forgetListener() = 0;

    /** Whether run has returned. Any thread. */
    virtual bool hasEnded() const = 0;

    /** Whether close was called. Any thread. */
    virtual bool isClosing() const = 0;

    /** Returns the id of the camera for the line of a talk, of which many cameras take one; else empty. */
    virtual QString talkCamera() const { return QString(); }
};
