#include "server/devices/onvif/LineRefusal.h"

#include "protocol/ServerReply.h"
#include "server/devices/onvif/GstPtr.h"

#include <QRegularExpression>

namespace {

// RTSP status codes (RFC 2326, clause 7.1.1).
constexpr int badRequest = 400;
constexpr int unauthorized = 401;
constexpr int forbidden = 403;
constexpr int notFound = 404;
constexpr int notEnoughBandwidth = 453;
constexpr int methodNotValid = 455;
constexpr int aggregateNotAllowed = 459;
constexpr int unsupportedTransport = 461;
constexpr int serviceUnavailable = 503;

/** An error message of rtspsrc, taken apart. */
struct RtspFailure
{
    explicit RtspFailure(GstMessage* message)
    {
        GError* parsed = nullptr;
        char* text = nullptr;
        gst_message_parse_error(message, &parsed, &text);
        error.reset(parsed);
        const GstPtr<char> owned(text);
        status = statusOf(message, text);
    }

    bool is(GstResourceError code) const
    {
        return g_error_matches(error.get(), GST_RESOURCE_ERROR, code) != FALSE;
    }

    /** The RTSP status that a message carries: in a field or, of SETUP, in its text; 0 without one. */
    static int statusOf(GstMessage* message, const char* text)
    {
        const GstStructure* details = nullptr;
        gst_message_parse_error_details(message, &details);
        guint status = 0;
        if (details != nullptr && gst_structure_get_uint(details, "rtsp-status-code", &status) != FALSE) {
            return static_cast<int>(status);
        }
        static const QRegularExpression pattern(QStringLiteral("Error \\(([1-5][0-9][0-9])\\)"));
        return pattern.match(QString::fromUtf8(text)).captured(1).toInt();
    }

    GstPtr<GError> error;
    int status = 0;
};

/** Whether nobody listens at the address, or something ended the connection. */
bool isUnreachable(const RtspFailure& failure)
{
    return failure.is(GST_RESOURCE_ERROR_OPEN_READ_WRITE) || failure.is(GST_RESOURCE_ERROR_OPEN_READ);
}

/** Whether the camera, or something between, ended the connection in the middle of a request. */
bool isCut(const RtspFailure& failure)
{
    return failure.status == 0 &&
           (failure.is(GST_RESOURCE_ERROR_READ) || failure.is(GST_RESOURCE_ERROR_WRITE));
}

LineRefusal unreachable()
{
    return {ReturnCode::cameraOffline, QStringLiteral("the camera cannot be reached")};
}

QString wordsOf(const RtspFailure& failure)
{
    return failure.status != 0 ? QStringLiteral("RTSP status %1").arg(failure.status)
                               : QString::fromUtf8(failure.error->message);
}

/** What is the same for talks and videos; empty for the rest. */
std::optional<LineRefusal> commonRefusal(const RtspFailure& failure)
{
    const int status = failure.status;
    if (status == unauthorized || status == forbidden || failure.is(GST_RESOURCE_ERROR_NOT_AUTHORIZED)) {
        return LineRefusal{ReturnCode::loginRefused,
                           QStringLiteral("the camera refuses the user name or the password")};
    }
    if (status == notEnoughBandwidth || status == serviceUnavailable) {
        return LineRefusal{ReturnCode::cameraBusy, QStringLiteral("the camera is busy with others")};
    }
    if (status == notFound || failure.is(GST_RESOURCE_ERROR_NOT_FOUND)) {
        return LineRefusal{ReturnCode::talkRefused,
                           QStringLiteral("the camera has no stream at this address")};
    }
    return std::nullopt;
}

} // namespace

LineRefusal LineRefusal::ofVideo(GstMessage* error, const SdpFormats::Video* video)
{
    const RtspFailure failure(error);
    if (const auto refusal = commonRefusal(failure)) {
        return *refusal;
    }
    if (video != nullptr && !video->stream) {
        return noVideo(video->offered);
    }
    return isUnreachable(failure) || isCut(failure)
               ? unreachable()
               : LineRefusal{ReturnCode::noPicture,
                             QStringLiteral("the camera refuses its video: %1").arg(wordsOf(failure))};
}

LineRefusal LineRefusal::noVideo(const QString& offered)
{
    return {ReturnCode::noPicture, offered.isEmpty()
                                       ? QStringLiteral("the camera's stream has no video")
                                       : QStringLiteral("the camera's video is %1, not H264").arg(offered)};
}

std::optional<LineRefusal> LineRefusal::of(GstMessage* error, const StreamChoice* choice,
                                           const CameraSettings& settings)
{
    const RtspFailure failure(error);
    if (const auto refusal = commonRefusal(failure)) {
        return refusal;
    }
    if (choice != nullptr && !choice->hasLoudspeaker) {
        return noLoudspeaker();
    }
    if (choice != nullptr && !choice->talkFormat) {
        return noCodec(choice->offered, settings.talkCodec);
    }
    if (failure.status == unsupportedTransport ||
        (choice != nullptr && failure.error->domain == GST_STREAM_ERROR)) {
        const bool isUdp = settings.transport == CameraTransport::Udp;
        return LineRefusal{
            ReturnCode::talkRefused,
            QStringLiteral("the camera does not offer the transport \"%1\"; its setting may be \"%2\", too")
                .arg(isUdp ? QLatin1String("udp") : QLatin1String("tcp"),
                     isUdp ? QLatin1String("tcp") : QLatin1String("udp"))};
    }
    if (isUnreachable(failure)) {
        return unreachable();
    }
    return choice != nullptr ? std::optional(other(error)) : std::nullopt;
}

bool LineRefusal::isOfMethod(GstMessage* error)
{
    // RtspGuard makes 455 of 405 and 501.
    const int status = RtspFailure(error).status;
    return status == badRequest || status == methodNotValid || status == aggregateNotAllowed;
}

LineRefusal LineRefusal::undescribed(GstMessage* error, bool hasTls)
{
    const RtspFailure failure(error);
    if (!hasTls && failure.status == 0 && failure.is(GST_RESOURCE_ERROR_READ)) {
        return {
            ReturnCode::talkRefused,
            QStringLiteral("the camera gives no answer of RTSP; if it wants TLS, its address has to begin "
                           "with rtsps://")};
    }
    return other(error);
}

LineRefusal LineRefusal::other(GstMessage* error)
{
    const RtspFailure failure(error);
    return {ReturnCode::talkRefused, QStringLiteral("the camera refuses the talk: %1").arg(wordsOf(failure))};
}

LineRefusal LineRefusal::noMethod()
{
    return {ReturnCode::talkRefused,
            QStringLiteral("the camera refuses the talk: it takes neither PLAY nor RECORD")};
}

LineRefusal LineRefusal::untrusted()
{
    return {ReturnCode::talkRefused,
            QStringLiteral("the camera's certificate is signed by nobody whom this server trusts; the "
                           "camera's setting \"anyCertificate\" accepts it")};
}

LineRefusal LineRefusal::elsewhere()
{
    return {ReturnCode::talkRefused,
            QStringLiteral("the camera sends to another address, which is not followed")};
}

LineRefusal LineRefusal::endless()
{
    return {ReturnCode::talkRefused,
            QStringLiteral("the camera sends from one of its addresses to the next, without an end")};
}

LineRefusal LineRefusal::streamElsewhere()
{
    return {ReturnCode::talkRefused,
            QStringLiteral("the camera wants the talk to be sent to another host, which is not done")};
}

LineRefusal LineRefusal::flood()
{
    return {ReturnCode::talkRefused, QStringLiteral("the camera sends more than answers and sound")};
}

LineRefusal LineRefusal::noRoom()
{
    return {ReturnCode::talkRefused, QStringLiteral("the server has no room for one more talk to a camera")};
}

LineRefusal LineRefusal::noLoudspeaker()
{
    return {ReturnCode::noLoudspeaker, QStringLiteral("the camera offers no loudspeaker")};
}

LineRefusal LineRefusal::noCodec(const QString& offered, const QString& talkCodec)
{
    return {
        ReturnCode::talkRefused,
        talkCodec.isEmpty()
            ? QStringLiteral("the camera's loudspeaker takes %1, which this server cannot make").arg(offered)
            : QStringLiteral("the camera's loudspeaker takes %1, not %2").arg(offered, talkCodec)};
}
