#pragma once

#include "platform/FrameSmith.h"

#include <QByteArray>
#include <QString>

#include <chrono>
#include <functional>
#include <vector>

/**
 * Takes the capture library's place in a test program: records every call with the bytes of its options,
 * fails where it is told to, and delivers packets from a thread of its own. One for the process; reset before
 * use.
 */
namespace FakeFrameSmith {

struct Call
{
    QString function;
    QByteArray options;            ///< The options' bytes, if the function takes any.
    std::vector<qint64> arguments; ///< Plain numbers in order.
    void* handle = nullptr;        ///< The channel or library it was called for.
};

void reset();

std::vector<Call> calls();

/** The functions called so far, in order. */
QStringList functions();

void clearCalls();

/** Makes all further calls of a function return @p code. */
void fail(const QString& function, std::int32_t code);

/** Makes FrameSmith_CreateAudioCaptureChannel succeed without a channel. */
void withholdCaptureChannel();

/** Runs instead of the default behaviour of FrameSmith_Initial; may throw. */
void setInitialHook(std::function<void()> hook);

/** The capture options of the last created capture channel. */
FrameSmithCaptureOptions captureOptions();

struct Delivery
{
    std::uint32_t result;
    std::chrono::nanoseconds duration; ///< How long the callback kept the thread.
};

/** Calls the packet callback from a thread of the library and waits for its end. */
Delivery deliver(const QByteArray& packet, std::uint32_t offset, std::uint32_t streamType, DWORD delay);

/** As above, for any record and context. */
Delivery deliver(void* context, TMediaDataPacketInfo* record, DWORD delay);

/** What FrameSmith_MakeAudioPacket was given last. */
QByteArray lastPcm();

} // namespace FakeFrameSmith
