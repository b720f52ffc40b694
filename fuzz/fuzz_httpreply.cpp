// Any bytes as a reply of HTTP: the same in one piece and in many, never beyond its limits. What asks for a
// login gets one line.

#include "onvif/HttpDigest.h"
#include "onvif/HttpReply.h"

#include <cstdlib>

namespace {

constexpr int maxBody = 4096; // bytes

HttpReply read(const QByteArray& bytes, int piece)
{
    HttpReply reply(maxBody);
    for (int at = 0; at < bytes.size() && reply.state() == HttpReply::Reading; at += piece) {
        reply.take(bytes.mid(at, piece));
    }
    reply.end();
    return reply;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char*>(data), static_cast<int>(size));
    const HttpReply whole = read(bytes, bytes.size() + 1);
    for (const int piece : {1, 5, 1000}) {
        const HttpReply other = read(bytes, piece);
        // In pieces a limit may be noticed earlier, before the bytes that follow.
        if (other.state() != whole.state() || other.status() != whole.status() ||
            (whole.state() == HttpReply::Done && other.body() != whole.body())) {
            std::abort();
        }
    }
    if (whole.state() == HttpReply::Reading || whole.body().size() > maxBody) {
        std::abort();
    }
    const QByteArray& challenge = whole.header("www-authenticate");
    if (auto digest = HttpDigest::fromChallenges(challenge)) {
        const QByteArray login =
            digest->authorization("POST", "/", QStringLiteral("anna"), QStringLiteral("x"), "1");
        if (login.isEmpty() || login.contains('\n') || login.contains('\r')) {
            std::abort();
        }
    }
    return 0;
}
